#include "Tests/Torture/NastyNames.h"

#include <algorithm>
#include <array>

namespace Torture {
namespace {

const std::array names = std::to_array<std::string>({"Ana",
                                                     "Ana",
                                                     "ana",
                                                     "ANA",
                                                     "Pizza?",
                                                     "Pizza-",
                                                     "a/b",
                                                     "a:b",
                                                     "..",
                                                     ".",
                                                     "...",
                                                     "CON",
                                                     "nul.txt",
                                                     "COM1",
                                                     "   ",
                                                     "",
                                                     "trailing. ",
                                                     "blank ",
                                                     " blank",
                                                     "dots...",
                                                     "-dash-",
                                                     "_viewer",
                                                     "avatars",
                                                     "messages",
                                                     "👩‍👩‍👧 Família",
                                                     "مرحبا",
                                                     "\u202Etxt.evil",
                                                     "é",
                                                     "e\u0301",
                                                     "Straße",
                                                     "STRASSE",
                                                     "İstanbul",
                                                     "tab\there",
                                                     "line\nbreak",
                                                     "quote\"s",
                                                     "<b>|*",
                                                     "back\\slash",
                                                     "100 %",
                                                     "a#b?c",
                                                     "Ana-2",
                                                     ".hidden",
                                                     ".TIDEWELL-partial-x",
                                                     "index.html",
                                                     "_transcript.txt",
                                                     "5511900001111@s.whatsapp.net",
                                                     "~",
                                                     "$HOME",
                                                     "\xEF\xBF\xBD",
                                                     "Messages-2"});

std::string longName(Fixture::SeededRandom& random) {
  static const std::array pieces = std::to_array<std::string>({"very long ", "長い", "👪", "x"});
  const std::string& piece = random.pick(pieces);
  std::string name;
  for (std::size_t count = 60 + random.below(200); count > 0; --count) name += piece;
  return name;
}

}  // namespace

std::string NastyNames::chat(Fixture::SeededRandom& random) {
  if (random.chance(8)) return longName(random);
  return random.pick(names);
}

std::string NastyNames::file(Fixture::SeededRandom& random) {
  std::string name = random.chance(5) ? longName(random) : random.pick(names);
  std::ranges::replace(name, '/', '?');
  return name;
}

}  // namespace Torture
