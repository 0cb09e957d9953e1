#include "Tests/Fuzz/MessageSeeds.h"

#include <string_view>

#include "Tests/Support/PlistWriter.h"
#include "Tests/Support/ProtobufWriter.h"

namespace {

using Fixture::Bytes;

// A blob behind the type of its message.
Bytes typed(std::uint8_t type, const Fixture::Protobuf& blob) {
  Bytes bytes = {type};
  Fixture::append(bytes, blob.bytes());
  return bytes;
}

Bytes eventOf(std::uint8_t code, std::string_view parameter) {
  Bytes bytes = {code};
  Fixture::append(bytes, Fixture::bytesOf(parameter));
  return bytes;
}

}  // namespace

std::vector<Fixture::Bytes> MessageSeeds::messageBlobs() {
  using Fixture::Protobuf;
  const Protobuf original = Protobuf()
                                .message(3, Protobuf().text(3, "caption"))
                                .message(9, Protobuf().integer(5, 7).integer(8, 1))
                                .message(60, Protobuf().text(2, "When?"));
  const Protobuf button = Protobuf().message(2, Protobuf().text(1, "Track").text(2, "https://a.example"));
  const Protobuf words =
      Protobuf().text(2, "Title").text(6, "words").text(7, "footer").message(8, button).message(9, button);
  const Protobuf list = Protobuf().text(1, "Menu").message(5, Protobuf().message(2, Protobuf().text(1, "Apple")));
  const Protobuf lamp = Protobuf().text(3, "A lamp").text(5, "EUR").integer(6, 19'990);
  const Protobuf reactions = Protobuf()
                                 .message(1, Protobuf().text(2, "2@lid").text(3, "👍").integer(4, 5))
                                 .message(2, Protobuf().text(2, "❤️").integer(3, 6))
                                 .message(3, Protobuf().message(1, Protobuf().text(1, "👍").integer(2, 9)));
  const Protobuf poll = Protobuf()
                            .text(2, "When?")
                            .message(3, Protobuf().text(1, "Now"))
                            .message(5, Protobuf().packed(1, {0, 1}).text(4, "2@lid"))
                            .message(6, Protobuf().integer(1, 0));
  const Bytes copy = Protobuf().text(1, "words").bytes();
  Bytes archive = {0};
  Fixture::append(
      archive, Fixture::binaryPlist(Fixture::PlistDictionary{
                   {"$top", Fixture::PlistDictionary{{"root", Fixture::PlistUID{1}}}},
                   {"$objects", Fixture::PlistArray{"$null", Fixture::PlistDictionary{{"stanzaID", "3A"},
                                                                                      {"senderJID", "2@lid"},
                                                                                      {"quotedMessageData", copy}}}}}));
  return {archive,
          typed(0, Protobuf().text(5, "3A").text(6, "2@lid").text(7, "1-2@g.us").message(19, original).integer(17, 1)),
          typed(24, Protobuf().message(24, Protobuf().message(1, words))),
          typed(24, Protobuf().message(51, Protobuf().message(1, words)).message(43, Protobuf().message(1, list))),
          typed(26, Protobuf().message(26, Protobuf().message(1, Protobuf().message(1, lamp)))),
          typed(27, Protobuf().message(28, Protobuf().text(4, "Garden").text(6, "Join"))),
          typed(28, Protobuf().integer(36, 604'800)),
          typed(59, Protobuf().message(87, Protobuf().message(1, Protobuf().integer(3, 95)))),
          typed(46, Protobuf().message(7, reactions).message(8, poll))};
}

std::vector<Fixture::Bytes> MessageSeeds::groupEvents() {
  return {eventOf(1, "Garden"),
          eventOf(2, "2@lid"),
          eventOf(7, "2@lid"),
          eventOf(26, "604800"),
          eventOf(12, R"({"subject":"Garden","author":"2@lid"})"),
          eventOf(50, "2@lid;3@lid,1@lid"),
          eventOf(51, R"({"author":"2@lid","subject":null,"parent_group_name":"Village"})"),
          eventOf(56, R"({"previous_subject":"Old","new_subject":"New"})")};
}
