// A strict check of well-formedness for the XML that the program writes.
#pragma once

#include <string>
#include <vector>

namespace zeb_test {

struct xml_element {
  std::string name;
  std::vector<std::pair<std::string, std::string>> attributes;
  std::string text;  // character data right inside it
  std::string attribute(const std::string& key) const;
  double number(const std::string& key) const { return std::stod(attribute(key)); }
};

/// Elements in the order of their start tags; `fault` gets what is wrong, and is empty if nothing.
std::vector<xml_element> read_xml(const std::string& document, std::string& fault);

}  // namespace zeb_test
