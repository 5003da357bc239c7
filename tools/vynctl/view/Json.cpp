// SPDX-License-Identifier: MIT
// The only source that knows the JSON package: its trees are made of the plain values here.
#include "view/Json.h"

#include <nlohmann/json.hpp>

namespace vynctl {
namespace {

using Tree = nlohmann::ordered_json;

constexpr int kOneLine = -1;
constexpr int kIndent = 2;

Tree TreeOf(const Json& json);

Tree Convert(std::monostate) { return nullptr; }
template <typename Scalar>
Tree Convert(const Scalar& scalar) {
  return scalar;
}
Tree Convert(const Json::Array& array) {
  Tree tree = Tree::array();
  for (const Json& element : array) tree.push_back(TreeOf(element));
  return tree;
}
Tree Convert(const Json::Object& object) {
  Tree tree = Tree::object();
  for (const auto& [name, value] : object) tree[name] = TreeOf(value);
  return tree;
}

Tree TreeOf(const Json& json) {
  return std::visit([](const auto& data) { return Convert(data); }, json.data);
}

std::string Text(const Json& json, int indent) {
  return TreeOf(json).dump(indent, ' ', false, Tree::error_handler_t::replace);
}

}  // namespace

std::string CompactText(const Json& json) { return Text(json, kOneLine); }

std::string IndentedText(const Json& json) { return Text(json, kIndent); }

}  // namespace vynctl
