#include "Tests/Fuzz/FuzzTargets.h"

#include <array>

#include "TidewellCore/Crypto/BackupKeyBag.h"
#include "TidewellCore/Crypto/MBFileArchive.h"
#include "TidewellCore/Platform/BinaryPropertyList.h"
#include "TidewellCore/Platform/Json.h"
#include "TidewellCore/Platform/Precondition.h"
#include "TidewellCore/Platform/Text.h"
#include "TidewellCore/Platform/XMLPropertyList.h"
#include "TidewellCore/TidewellError.h"

namespace {

// Looks at texts alone: shared objects make a full walk exponential.
void checkTexts(const PropertyList& list) {
  const auto* text = list.as<std::string>();
  if (text != nullptr) precondition(Text::isValid(*text), "text of a property list is UTF-8");
  const auto* entries = list.as<PropertyListDictionary>();
  if (entries == nullptr) return;
  for (const auto& [key, value] : *entries) precondition(Text::isValid(key), "keys of a property list are UTF-8");
}

void binaryPropertyList(ByteView input) {
  try {
    checkTexts(parseBinaryPropertyList(input));
  } catch (const PropertyListError&) {
  }
}

void xmlPropertyList(ByteView input) {
  try {
    checkTexts(parseXMLPropertyList(input));
  } catch (const PropertyListError&) {
  }
}

void backupKeyBag(ByteView input) {
  try {
    const BackupKeyBag bag = BackupKeyBag::parse(input);
    precondition(!bag.salt.empty() && bag.iterations > 0 && !bag.classKeys.empty(), "a key bag is usable");
    precondition(bag.unwrappedClassKeyCount() == 0, "a key bag that was just read is locked");
  } catch (const TidewellError& error) {
    precondition(error.is<TidewellError::IOFailure>(), "an unreadable key bag is an ioFailure");
  }
}

void mbFileArchive(ByteView input) {
  const MBFileArchive::Metadata metadata = MBFileArchive::metadata(input);
  if (metadata.encryptionKey) precondition(metadata.encryptionKey->size() > 7, "a key is longer than 7 bytes");
}

void json(ByteView input) {
  const auto document = Json::parse(textOf(input));
  if (!document) return;
  const std::string written = document->write();
  const auto again = Json::parse(written);
  precondition(again && again->write() == written, "what JSON was written is read again");
}

constexpr std::array<FuzzTarget, 5> targets{{{"BinaryPropertyList", binaryPropertyList},
                                             {"XMLPropertyList", xmlPropertyList},
                                             {"BackupKeyBag", backupKeyBag},
                                             {"MBFileArchive", mbFileArchive},
                                             {"Json", json}}};

}  // namespace

std::span<const FuzzTarget> fuzzTargets() { return targets; }
