#include "parallel/transport/modules.h"

#include <dlfcn.h>
#include <unistd.h>

#include <array>

namespace zeb {
namespace {

// Where the program stands, with "/" at its end.
std::string folder_of_program() {
  std::array<char, 4096> path{};
  const ssize_t length = readlink("/proc/self/exe", path.data(), path.size() - 1);
  const std::string all(path.data(), length > 0 ? static_cast<std::size_t>(length) : 0);
  return all.substr(0, all.rfind('/') + 1);
}

}  // namespace

std::unique_ptr<transport> transport_of_module(const std::string& name, std::string* fault) {
  using maker = transport* (*)();
  const std::string folder = folder_of_program();
  for (const std::string& path : {folder + name + ".so", folder + "../lib/zeb/" + name + ".so"}) {
    if (access(path.c_str(), R_OK) != 0) continue;
    void* const module = dlopen(path.c_str(), RTLD_NOW | RTLD_GLOBAL);
    if (!module) {
      *fault = dlerror();  // NOLINT(concurrency-mt-unsafe)
      continue;
    }
    const auto make = reinterpret_cast<maker>(dlsym(module, "zeb_make_transport"));
    if (make) return std::unique_ptr<transport>(make());
  }
  if (fault->empty()) *fault = "the module " + name + ".so isn't there";
  return nullptr;
}

}  // namespace zeb
