#include "TidewellCore/ChatData/NoticeRow.h"

#include "TidewellCore/ChatData/StoredJID.h"

std::optional<Person> NoticeRow::member() const { return StoredJID::person(memberJID.value_or(""), ownJIDs); }

std::optional<Person> NoticeRow::personInText() const { return StoredJID::person(text.value_or(""), ownJIDs); }

std::optional<Person> NoticeRow::actor() const { return isFromMe ? Person{.isOwner = true} : member(); }
