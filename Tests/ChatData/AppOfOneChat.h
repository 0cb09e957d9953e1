#pragma once

#include <string>
#include <utility>

#include "Tests/Support/BackupBuilder.h"

// The smallest phone that is worth reading.
namespace Fixture {

inline constexpr const char* phone = "5511900001111@s.whatsapp.net";

inline WhatsAppContents app(std::string domain, const std::string& name) {
  return {.domain = std::move(domain),
          .chats = {{.jid = phone}},
          .messages = {{.chat = 1, .date = 1, .text = name + " first"},
                       {.chat = 1, .date = 2, .text = name + " second"},
                       {.chat = 1, .date = 3, .text = name + " pending"}},
          .contacts = {{.fullName = name, .whatsAppID = phone}}};
}

}  // namespace Fixture
