#pragma once

#include <string>
#include <string_view>
#include <vector>

// What tells the variants of one name ("a.jpg", "a-2.jpg", "a-3.jpg") from those
// of every other name, so that they need not be tried one after another.
namespace NameFamily {

// FileNaming's variants are numbered to here at most.
inline constexpr int mostDigits = 10;

// What the keys of those variants of a name have in common whose number has so
// many digits, 1 to `mostDigits`: they are the family's members of that number.
std::string of(std::string_view name, int digits);
// Whether a name has one family, whatever the number of digits. A long one is
// cut to make room for them.
bool isOne(std::string_view name);

// A name as a variant of another.
struct Member {
  std::string family;
  int number = 0;  // 2 or more

  bool operator==(const Member&) const = default;
};
// What a name with this key may be: none, one or two members.
std::vector<Member> readings(std::string_view key);

}  // namespace NameFamily
