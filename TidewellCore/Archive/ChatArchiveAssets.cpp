#include "TidewellCore/Archive/ChatArchiveAssets.h"

#include <map>

#include "TidewellCore/Archive/ViewerSources.h"
#include "TidewellCore/Crypto/CryptoShim.h"
#include "TidewellCore/ExportTexts.h"
#include "TidewellCore/FolderNames.h"
#include "TidewellCore/Platform/Base64.h"
#include "TidewellCore/Platform/Precondition.h"
#include "TidewellCore/Platform/ReadableText.h"

namespace {

constexpr std::string_view opening = "{{";
constexpr std::string_view closing = "}}";

using Values = std::map<std::string, std::string, std::less<>>;

// Every "{{name}}" replaced by its value, escaped for HTML.
std::string filled(std::string_view pageTemplate, const Values& values) {
  std::string page;
  for (;;) {
    const auto begin = pageTemplate.find(opening);
    page += pageTemplate.substr(0, begin);
    if (begin == std::string_view::npos) return page;
    const auto end = pageTemplate.find(closing, begin);
    precondition(end != std::string_view::npos, "a placeholder of the page does not end");
    const auto value = values.find(pageTemplate.substr(begin + opening.size(), end - begin - opening.size()));
    precondition(value != values.end(), "a placeholder of the page has no value");
    page += ReadableText::escapedForHTML(value->second);
    pageTemplate.remove_prefix(end + closing.size());
  }
}

// What stands in the one script element without a source.
std::string_view inlineScript(std::string_view page) {
  constexpr std::string_view tag = "<script>";
  const auto begin = page.find(tag);
  const auto end = page.find("</script>", begin);
  precondition(begin != std::string_view::npos && end != std::string_view::npos, "the page has no inline script");
  return page.substr(begin + tag.size(), end - begin - tag.size());
}

// As a content security policy names a script (CSP Level 3, section 2.3.1).
std::string hash(std::string_view script) { return Base64::encode(sha256(bytesOf(script))); }

}  // namespace

std::string ChatArchiveAssets::indexHTML(const ChatArchiveStrings& strings, std::string_view assetPrefix) {
  const std::string viewer = std::string(FolderNames::viewer) + "/";
  precondition(assetPrefix.ends_with(viewer), "the viewer's folder has another name");
  Values values = ExportTexts::section(ChatArchiveStrings::forLanguageCode(strings.language).language, "page");
  for (const auto& [name, text] : ChatArchiveStrings::fields()) values[std::string(name)] = strings.*text;
  values["assetPrefix"] = assetPrefix;
  values["base"] = assetPrefix.substr(0, assetPrefix.size() - viewer.size());
  values["scriptHash"] = "";
  values["scriptHash"] = hash(inlineScript(filled(ViewerSources::page(), values)));
  return filled(ViewerSources::page(), values);
}

std::string_view ChatArchiveAssets::styleSheet() { return ViewerSources::styleSheet(); }

std::string_view ChatArchiveAssets::script() { return ViewerSources::script(); }
