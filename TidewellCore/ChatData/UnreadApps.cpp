#include "TidewellCore/ChatData/UnreadApps.h"

#include <algorithm>
#include <array>

#include "TidewellCore/Platform/Text.h"

namespace {

struct App {
  bool isBusiness = false;
  const char* notRead = "";
  const char* withoutMessages = "";
};
constexpr std::array<App, 2> apps{{{.isBusiness = false,
                                    .notRead = UnreadApps::personalNotRead,
                                    .withoutMessages = UnreadApps::personalWithoutMessages},
                                   {.isBusiness = true,
                                    .notRead = UnreadApps::businessNotRead,
                                    .withoutMessages = UnreadApps::businessWithoutMessages}}};

// Of a file of either app; the index is asked for them in any letter case.
bool isOf(const App& app, const ManifestFile& file) {
  return Text::lowercased(file.domain).ends_with("whatsappsmb.shared") == app.isBusiness;
}

}  // namespace

std::vector<std::string> UnreadApps::warnings(const ManifestStore& manifest) {
  std::vector<std::string> all;
  for (const App& app : apps) {
    if (manifest.chatStorage && isOf(app, *manifest.chatStorage)) continue;
    const auto isItsDatabase = [&](const ManifestFile& file) {
      return isOf(app, file) && file.relativePath == "ChatStorage.sqlite";
    };
    const bool hasMedia =
        std::ranges::any_of(manifest.media, [&](const ManifestFile& file) { return isOf(app, file); });
    if (std::ranges::any_of(manifest.files, isItsDatabase)) {
      all.emplace_back(app.notRead);
    } else if (hasMedia) {
      all.emplace_back(app.withoutMessages);
    }
  }
  return all;
}
