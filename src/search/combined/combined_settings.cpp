#include "search/combined/combined_settings.h"

#include <algorithm>

namespace zeb {

combined_settings combined;

namespace {

constexpr int standard_size = 45;  // of sectors

int rounded(double value) { return static_cast<int>(value + 0.5); }

int swaps_of_large_sectors(int taxa) { return taxa >= 500 ? rounded((taxa + taxa) / 100.0) : 10; }

void change_each(combined_settings& options, sector_settings& sector, double ratio,
                 bool also_replications, int taxa) {
  const auto times = [ratio](int value) { return static_cast<int>(value * ratio); };
  sector.selfactor = std::clamp(static_cast<int>(50 / ratio), 5, 95);
  sector.selection_count = 0;
  const int half = std::max(standard_size, taxa / 2);
  sector.minsize = sector.maxsize = std::clamp(times(standard_size), standard_size, half);
  sector.dglobal = swaps_of_large_sectors(taxa);
  sector.increase = 75;
  if (also_replications) {
    const int count = times(options.replications);
    options.replications = count < 4 ? 3 : std::min(count, 12);
  }
  options.fuse = std::clamp(times(options.fuse), 4, 10);
  options.drift = times(options.drift + (ratio > 1 ? 1 : 0));
  options.autoconst = 1;
  options.xmix = true;
  if (!options.rss && !options.xss) options.rss = true;
}

}  // namespace

void set_level(combined_settings& options, sector_settings& sector, double level, int taxa) {
  const double base = taxa * 0.5;
  double size = base - 2 / (level + 1) * base;
  if (level >= 3) size += size / 4;
  if (size < standard_size) {
    sector.minsize = sector.maxsize = base < standard_size ? rounded(base) : standard_size;
  } else {
    sector.maxsize = rounded(std::min(size, base));
    sector.minsize = std::min(sector.maxsize, standard_size);
  }
  sector.minsize = std::max(5, sector.minsize);
  sector.maxsize = std::max(5, sector.maxsize);
  sector.dglobal = swaps_of_large_sectors(taxa);
  sector.global = std::max(1, rounded(taxa * 0.75 / sector.maxsize));
  sector.increase = 75;
  sector.selfactor = static_cast<int>(100 - level / (level + 2) * 100);
  sector.selection_count = 0;
  options.fuse = std::max(3, static_cast<int>(level));
  options.drift = level <= 2 ? 0 : level > 5.5 ? rounded((level - 4) * 6) : 4;
  options.ratchet = 0;
  options.xmix = true;
  options.autoconst = 1;
  options.replications = static_cast<int>(level) + 4;
  options.level = level;
}

effort_change adjust_effort(combined_settings& options, sector_settings& sector, int failures,
                            int period, bool also_replications, int taxa) {
  if (failures > period / 2 && failures <= period) return effort_change::same;
  const double ratio = std::clamp(static_cast<double>(failures) / period, 0.75, 1.25);
  const effort_change change = ratio > 1 ? effort_change::more : effort_change::less;
  if (options.moves_level && options.level >= 0) {
    const double step = ratio > 1 ? options.level_step : -options.level_step;
    const double level = std::clamp(options.level + step, 0.0, highest_level);
    if (level == options.level) return effort_change::same;
    set_level(options, sector, level, taxa);
  } else {
    change_each(options, sector, ratio, also_replications, taxa);
  }
  return change;
}

}  // namespace zeb
