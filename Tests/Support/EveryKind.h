#pragma once

#include <string>

#include "Tests/Support/BackupContents.h"

// An app that holds a message of every type, every code of an event and a notice, and all that can
// hang on a message, in chats whose texts say what they are.
namespace Fixture::EveryKind {

inline const std::string me = "15550000000@s.whatsapp.net";
inline const std::string ana = "15550000001@s.whatsapp.net";
inline const std::string ben = "15550000002@s.whatsapp.net";
// Her number stands in LID.sqlite alone, and Dora's name.
inline const std::string carla = "15550000003@s.whatsapp.net";
inline const std::string carlaLID = "100000000000003@lid";
inline const std::string doraLID = "100000000000004@lid";
// No chat of his is there, only a call.
inline const std::string emil = "15550000005@s.whatsapp.net";
inline const std::string shop = "15550000010@s.whatsapp.net";
inline const std::string garden = "15550000001-1500000000@g.us";
inline const std::string roses = "120363000000000002@g.us";
inline const std::string channel = "120363000000000003@newsletter";

WhatsAppContents app();

}  // namespace Fixture::EveryKind
