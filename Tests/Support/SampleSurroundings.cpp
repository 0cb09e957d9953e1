#include "Tests/Support/SampleSurroundings.h"

#include <string>

#include "Tests/Support/SampleMedia.h"

namespace Fixture {

void addSurroundings(BackupContents& contents, SeededRandom& random) {
  const std::string domain = contents.whatsApp.domain;
  // An app that writes while the phone is backed up: the record has the size from before.
  contents.whatsApp.databaseStorage["ChatStorage.sqlite"].recordedSize = 65'536;
  contents.whatsApp.files.push_back({.relativePath = "Axolotl.sqlite", .content = random.bytes(8'192)});
  contents.whatsApp.files.push_back(
      {.relativePath = "Library/Preferences/group.net.whatsapp.WhatsApp.shared.plist", .content = bytesOf("bplist00")});
  contents.otherFiles = {{"CameraRollDomain", "Media/DCIM/100APPLE/IMG_0001.JPG", jpegPhoto(random, 320, 240)},
                         {"HomeDomain", "Library/SMS/sms.db", random.bytes(12'288), {.protectionClass = 4}},
                         {"AppDomain-com.example.notes", "Documents/notes.json", bytesOf("[]\n")},
                         {"AppDomain-com.example.notes", "Documents/ChatStorage.sqlite", bytesOf("not WhatsApp's")}};
  contents.indexRows = {{domain, "", 2},
                        {domain, "Message", 2},
                        {domain, "Message/Media", 2},
                        {domain, "Media/Profile", 2},
                        {"CameraRollDomain", "Media/DCIM", 2},
                        {"HomeDomain", "Library/Caches/link", 4}};
}

}  // namespace Fixture
