#pragma once

#include <cstddef>
#include <pugixml.hpp>
#include <string>
#include <utility>
#include <vector>

namespace bench {

/// An element with everything in it, in order, as pugixml takes it.
struct Element {
  std::string name;
  std::vector<std::pair<std::string, std::string>> attributes;
  std::string data;
  std::vector<Element> children;
};

inline Element elementOf(const pugi::xml_node& node) {
  Element element;
  element.name = node.name();
  for (const auto& each : node.attributes()) {
    element.attributes.emplace_back(each.name(), each.value());
  }
  element.data = node.child_value();
  for (const auto& child : node.children()) {
    if (child.type() == pugi::node_element) element.children.push_back(elementOf(child));
  }
  return element;
}

inline void append(pugi::xml_node parent, const Element& element) {
  pugi::xml_node node = parent.append_child(element.name.c_str());
  for (const auto& [name, value] : element.attributes) {
    node.append_attribute(name.c_str()) = value.c_str();
  }
  if (!element.data.empty()) node.text().set(element.data.c_str());
  for (const Element& child : element.children) append(node, child);
}

/// Takes what pugixml saves.
struct TextWriter : pugi::xml_writer {
  std::string text;
  void write(const void* data, std::size_t size) override {
    text.append(static_cast<const char*>(data), size);
  }
};

}  // namespace bench
