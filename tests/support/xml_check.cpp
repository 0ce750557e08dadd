#include "support/xml_check.h"

#include <cctype>
#include <cstdint>

namespace zeb_test {
namespace {

/// Characters of XML 1.0 in UTF-8, without overlong forms.
bool is_good_utf8(const std::string& s) {
  for (std::size_t i = 0; i < s.size();) {
    const auto b = static_cast<unsigned char>(s[i]);
    const std::size_t length = b < 0x80 ? 1 : b >= 0xf0 ? 4 : b >= 0xe0 ? 3 : b >= 0xc2 ? 2 : 0;
    if (length == 0 || i + length > s.size()) return false;
    std::uint32_t c = length == 1 ? b : b & (0x7fU >> length);
    for (std::size_t k = 1; k < length; ++k) {
      const auto t = static_cast<unsigned char>(s[i + k]);
      if ((t & 0xc0) != 0x80) return false;
      c = (c << 6) | (t & 0x3f);
    }
    if (c < 0x20 && c != '\n' && c != '\t' && c != '\r') return false;
    if ((c >= 0xd800 && c < 0xe000) || c == 0xfffe || c == 0xffff || c > 0x10ffff) return false;
    if ((length == 3 && c < 0x800) || (length == 4 && c < 0x10000)) return false;
    i += length;
  }
  return true;
}

bool are_good_entities(const std::string& s) {
  for (std::size_t i = s.find('&'); i != std::string::npos; i = s.find('&', i + 1)) {
    const std::string name = s.substr(i + 1, s.find(';', i) - i - 1);
    if (name != "amp" && name != "lt" && name != "gt" && name != "quot" && name != "apos")
      return false;
  }
  return true;
}

/// Splits "name a="b" c="d"" into the element. False where it isn't of that form.
bool read_tag(const std::string& tag, xml_element& element) {
  std::size_t i = 0;
  while (i < tag.size() && !std::isspace(static_cast<unsigned char>(tag[i]))) ++i;
  element.name = tag.substr(0, i);
  while (true) {
    while (i < tag.size() && std::isspace(static_cast<unsigned char>(tag[i]))) ++i;
    if (i >= tag.size()) return !element.name.empty();
    const std::size_t equals = tag.find("=\"", i);
    if (equals == std::string::npos) return false;
    const std::size_t end = tag.find('"', equals + 2);
    if (end == std::string::npos) return false;
    const std::string value = tag.substr(equals + 2, end - equals - 2);
    if (value.find('<') != std::string::npos || !are_good_entities(value)) return false;
    element.attributes.emplace_back(tag.substr(i, equals - i), value);
    i = end + 1;
  }
}

}  // namespace

std::string xml_element::attribute(const std::string& key) const {
  for (const auto& [name_of, value] : attributes)
    if (name_of == key) return value;
  return "";
}

std::vector<xml_element> read_xml(const std::string& document, std::string& fault) {
  std::vector<xml_element> out;
  std::vector<std::size_t> open;
  fault = is_good_utf8(document) ? "" : "not UTF-8 that XML allows";
  std::size_t i = document.starts_with("<?xml") ? document.find("?>") + 2 : 0;
  while (fault.empty() && i < document.size()) {
    const std::size_t next = document.find('<', i);
    const std::string text = document.substr(i, next - i);
    if (!are_good_entities(text)) fault = "bad entity in: " + text;
    if (!open.empty()) out[open.back()].text += text;
    if (next == std::string::npos) break;
    const std::size_t end = document.find('>', next);
    if (end == std::string::npos) return fault = "tag without end", out;
    std::string tag = document.substr(next + 1, end - next - 1);
    i = end + 1;
    if (tag.starts_with("/")) {
      if (open.empty() || out[open.back()].name != tag.substr(1)) fault = "unmatched </" + tag;
      if (!open.empty()) open.pop_back();
      continue;
    }
    const bool is_empty = tag.ends_with("/");
    if (is_empty) tag.pop_back();
    xml_element element;
    if (!read_tag(tag, element)) fault = "bad tag: " + tag;
    if (open.empty() && !out.empty()) fault = "second root";
    if (!is_empty) open.push_back(out.size());
    out.push_back(element);
  }
  if (fault.empty() && !open.empty()) fault = "element not closed: " + out[open.back()].name;
  return out;
}

}  // namespace zeb_test
