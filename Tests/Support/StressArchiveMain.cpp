#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <exception>
#include <iostream>
#include <string>
#include <vector>

#include "Tests/Support/SampleMedia.h"
#include "Tests/Support/SampleTexts.h"
#include "Tests/Support/TemporaryDirectory.h"
#include "TidewellCore/Archive/ChatArchiveWriter.h"
#include "TidewellCore/Archive/MessageWords.h"

namespace {

struct Size {
  std::size_t chats = 3000;
  std::size_t messages = 1'000'000;
  std::size_t longestChat = 250'000;
};

constexpr std::size_t photoCount = 24;
constexpr double newestMessage = 1'717'243'200;  // Unix seconds
constexpr const char* photoFolder = "Photos";

std::string photoPath(std::size_t number) {
  return std::string(photoFolder) + "/photo-" + std::to_string(number) + ".jpg";
}

void writePhotos(const std::filesystem::path& contentRoot) {
  Fixture::SeededRandom random(7);
  for (std::size_t number = 0; number < photoCount; ++number) {
    Fixture::writeFile(contentRoot / photoPath(number), Fixture::jpegPhoto(random, 640, 480));
  }
}

ArchiveMedia photo(Fixture::SeededRandom& random) {
  const std::string path = photoPath(random.below(photoCount));
  return {
      .kind = MediaKind::photos, .relativePath = path, .fileName = path.substr(path.find('/') + 1), .exported = true};
}

const std::string& nameOf(const Person& person) { return person.jid; }

// Something that hangs on a message, or that it is.
MessageDetails details(Fixture::SeededRandom& random, const std::string& text) {
  const Person other{.jid = "Member " + std::to_string(random.below(12))};
  switch (random.below(8)) {
    case 0:
      return {.reactions = {{.emoji = "👍", .person = other}, {.emoji = "❤️", .person = Person{.isOwner = true}}}};
    case 1:
      return {.content = LinkPreview{.url = "https://example.com/" + other.jid, .title = text, .summary = text}};
    case 2:
      return {.content = Notice{.kind = NoticeKind::memberLeft, .code = 3, .actor = other}};
    case 3:
      return {.content =
                  SharedLocation{.coordinates = Coordinates{.latitude = -23.5, .longitude = -46.6}, .name = text}};
    case 4:
      return {.content = Poll{.question = text, .options = {{.words = "Yes", .voters = {other}}, {.words = "No"}}}};
    default:
      return {.quote = Quote{.sender = other, .words = text}};
  }
}

// Gives a message its details; an answer leads to any of those before it.
void tell(const MessageDetails& details, std::size_t answered, ArchiveMessage& message) {
  const MessageWords::Context context{
      .wording = {.style = TranscriptStyle::english(), .nameOf = nameOf},
      .answered = MessageWords::Answered{.id = std::to_string(answered), .sender = "Member 1"}};
  MessageWords::tell(details, context, message);
}

// One chat of `count` messages, the last at `newest`, most of them minutes apart.
ArchiveChat chat(std::size_t number, std::size_t count, double newest) {
  using Fixture::Language;
  constexpr std::array languages{Language::portuguese, Language::english, Language::english,
                                 Language::japanese,   Language::arabic,  Language::portuguese};
  Fixture::SeededRandom random(1000 + number);
  const Language language = languages[number % languages.size()];
  ArchiveChat chat{.name = "Chat " + std::to_string(number),
                   .jid = "55119" + std::to_string(10'000'000 + number) + "@s.whatsapp.net",
                   .isGroup = number % 7 == 0};
  chat.folder = chat.name;
  double time = newest - static_cast<double>(count) * 400;
  for (std::size_t i = 0; i < count; ++i, time += 400) {
    const bool fromMe = random.below(3) == 0;
    ArchiveMessage message{.id = std::to_string(i + 1), .fromMe = fromMe, .timestamp = time};
    message.sender = fromMe ? "You" : chat.isGroup ? "Member " + std::to_string(random.below(12)) : chat.name;
    if (random.below(20) == 0) message.media = photo(random);
    if (!message.media || random.below(4) == 0) message.text = Fixture::sampleText(language, random);
    if (i > 0 && random.below(8) == 0) {
      tell(details(random, Fixture::sampleText(language, random)), 1 + random.below(i), message);
    }
    chat.messages.push_back(std::move(message));
  }
  // Something that stands once in the whole archive, at its very end of reading.
  if (number == 0) {
    chat.messages.front().text = "The needle xylophonic in the haystack";
    // Answered across the whole chat.
    tell({.quote = Quote{.words = "The needle xylophonic"}}, 1, chat.messages.back());
  }
  return chat;
}

void write(const std::filesystem::path& destination, const Size& size) {
  const std::filesystem::path contentRoot = destination / "messages";
  writePhotos(contentRoot);
  ChatArchiveWriter writer({.destination = destination,
                            .contentRoot = contentRoot,
                            .style = TranscriptStyle::english(),
                            .timeZone = {.identifier = "America/Sao_Paulo"}});
  const std::size_t others = (size.messages - size.longestChat) / std::max<std::size_t>(1, size.chats - 1);
  for (std::size_t number = 0; number < size.chats; ++number) {
    const double newest = newestMessage - static_cast<double>(number) * 3600;
    ArchiveChat written = chat(number, number == 0 ? size.longestChat : others, newest);
    written.id = ChatArchiveWriter::safeID(written.jid, std::nullopt);
    writer.add(written);
  }
  std::cout << writer.finish().string() << '\n';
}

}  // namespace

int main(int argc, char** argv) {
  CLI::App app("Writes a large Chat Archive of made-up messages, to measure the viewer with.");
  std::filesystem::path destination;
  Size size;
  app.add_option("DESTINATION", destination)->required();
  app.add_option("--chats", size.chats)->check(CLI::PositiveNumber)->capture_default_str();
  app.add_option("--messages", size.messages, "in all chats")->capture_default_str();
  app.add_option("--longest", size.longestChat, "messages of the longest chat, the newest")->capture_default_str();
  CLI11_PARSE(app, argc, argv);
  try {
    write(destination, size);
  } catch (const std::exception& failure) {
    std::cerr << failure.what() << '\n';
    return 1;
  }
}
