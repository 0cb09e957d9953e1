#pragma once

#include <span>
#include <string>
#include <string_view>

#include "Tests/Support/SeededRandom.h"

namespace Fixture {

enum class Language { portuguese, english, arabic, hebrew, japanese, chinese };

// Someone the phone's owner writes with. An empty `contact` is not in the address book.
struct SamplePerson {
  std::string_view user;
  std::string_view server;
  // The chat's partner name, "" for NULL.
  std::string_view chatName;
  std::string_view contact;
  std::string_view pushName;
  Language language = Language::english;

  std::string jid() const { return std::string(user) + "@" + std::string(server); }
};

struct SampleGroup {
  std::string_view user;
  std::string_view name;
  Language language = Language::english;

  std::string jid() const { return std::string(user) + "@g.us"; }
};

std::span<const SamplePerson> samplePeople();
std::span<const SampleGroup> sampleGroups();

// A short sentence, seldom several, at times with an emoji.
std::string sampleText(Language language, SeededRandom& random);

}  // namespace Fixture
