#include "TidewellCore/ChatData/OwnJID.h"

#include "TidewellCore/ChatData/StoredJID.h"
#include "TidewellCore/Platform/Base64.h"
#include "TidewellCore/Platform/ProtobufReader.h"

namespace {

constexpr std::size_t longest = 4'096;

}  // namespace

std::optional<std::string> OwnJID::inPushName(std::string_view pushName) {
  const auto message = pushName.size() > longest ? std::nullopt : Base64::decode(pushName);
  if (!message) return std::nullopt;
  try {
    std::optional<std::string> jid;
    for (ProtobufReader fields(*message); fields.next();) {
      if (fields.number() == 3) jid = StoredJID::checked(fields.text().value_or(""));
    }
    return jid;
  } catch (const ProtobufError&) {
    return std::nullopt;
  }
}
