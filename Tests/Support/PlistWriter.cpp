#include "Tests/Support/PlistWriter.h"

#include <plist/plist.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <memory>
#include <stdexcept>
#include <type_traits>

namespace Fixture {

namespace {

using Node = std::unique_ptr<std::remove_pointer_t<plist_t>, decltype(&plist_free)>;
using Buffer = std::unique_ptr<char, decltype(&std::free)>;

// The library's own constructor has no sign for numbers above the signed range; its XML reader has.
plist_t largeUnsignedNode(std::uint64_t number) {
  const std::string xml = "<plist version=\"1.0\"><integer>" + std::to_string(number) + "</integer></plist>";
  plist_t node = nullptr;
  plist_from_xml(xml.data(), static_cast<std::uint32_t>(xml.size()), &node);
  return node;
}

struct NodeMaker {
  plist_t operator()(const PlistDictionary& dictionary) const {
    plist_t node = plist_new_dict();
    for (const auto& [key, value] : dictionary) {
      plist_dict_set_item(node, key.c_str(), std::visit(*this, value.value));
    }
    return node;
  }
  plist_t operator()(const PlistArray& array) const {
    plist_t node = plist_new_array();
    for (const auto& value : array) plist_array_append_item(node, std::visit(*this, value.value));
    return node;
  }
  plist_t operator()(const std::string& text) const { return plist_new_string(text.c_str()); }
  plist_t operator()(std::int64_t number) const { return plist_new_uint(static_cast<std::uint64_t>(number)); }
  plist_t operator()(std::uint64_t number) const {
    const bool fitsSigned = number <= static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
    return fitsSigned ? plist_new_uint(number) : largeUnsignedNode(number);
  }
  plist_t operator()(bool flag) const { return plist_new_bool(flag ? 1 : 0); }
  plist_t operator()(double real) const { return plist_new_real(real); }
  plist_t operator()(PlistDate date) const {
    const double whole = std::floor(date.secondsSince2001);
    return plist_new_date(static_cast<std::int32_t>(whole),
                          static_cast<std::int32_t>((date.secondsSince2001 - whole) * 1e6));
  }
  plist_t operator()(const Bytes& data) const {
    return plist_new_data(reinterpret_cast<const char*>(data.data()), data.size());
  }
  plist_t operator()(PlistUID uid) const { return plist_new_uid(uid.value); }
};

template <typename Writer>
std::pair<Buffer, std::size_t> serialise(const PlistValue& root, Writer write) {
  const Node node(std::visit(NodeMaker{}, root.value), &plist_free);
  char* text = nullptr;
  std::uint32_t length = 0;
  write(node.get(), &text, &length);
  if (text == nullptr) throw std::runtime_error("The property list could not be written.");
  return {Buffer(text, &std::free), length};
}

}  // namespace

void setKey(PlistDictionary& dictionary, const std::string& key, PlistValue value) {
  const auto found = std::ranges::find(dictionary, key, [](const auto& entry) { return entry.first; });
  if (found == dictionary.end()) {
    dictionary.emplace_back(key, std::move(value));
  } else {
    found->second = std::move(value);
  }
}

void removeKey(PlistDictionary& dictionary, const std::string& key) {
  std::erase_if(dictionary, [&](const auto& entry) { return entry.first == key; });
}

Bytes binaryPlist(const PlistValue& root) {
  const auto [buffer, length] = serialise(root, &plist_to_bin);
  return {buffer.get(), buffer.get() + length};
}

std::string xmlPlist(const PlistValue& root) {
  const auto [buffer, length] = serialise(root, &plist_to_xml);
  return {buffer.get(), length};
}

}  // namespace Fixture
