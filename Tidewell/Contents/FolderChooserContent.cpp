#include "Tidewell/Contents/FolderChooserContent.h"

#include <algorithm>

#include "Tidewell/Contents/ContentText.h"

namespace {

QString nameOf(const FolderPlace& place, const L10n& texts) {
  switch (place.kind) {
    case FolderPlace::Kind::home:
      return texts.text("Home");
    case FolderPlace::Kind::desktop:
      return texts.text("Desktop");
    case FolderPlace::Kind::documents:
      return texts.text("Documents");
    case FolderPlace::Kind::computer:
      return texts.text("Computer");
    case FolderPlace::Kind::drive:
      break;
  }
  return ContentText::text(place.label);
}

QString symbolOf(FolderPlace::Kind kind) {
  switch (kind) {
    case FolderPlace::Kind::home:
      return QStringLiteral("house");
    case FolderPlace::Kind::desktop:
      return QStringLiteral("desktopcomputer");
    case FolderPlace::Kind::documents:
      return QStringLiteral("kind.documents");
    case FolderPlace::Kind::computer:
    case FolderPlace::Kind::drive:
      break;
  }
  return QStringLiteral("externaldrive");
}

QString textOf(FolderFault fault, const L10n& texts) {
  switch (fault) {
    case FolderFault::noSuchFolder:
      return texts.text("There is no such folder.");
    case FolderFault::noName:
      return texts.text("Type another name.");
    case FolderFault::nameOfSeveralFolders:
      return texts.text("A name cannot contain “/”.");
    case FolderFault::nameTaken:
      return texts.text("There is something with this name already.");
    case FolderFault::notPermitted:
      return texts.text("You cannot make folders here.");
    case FolderFault::notCreated:
      break;
  }
  return texts.text("The folder could not be made.");
}

QString textOf(const std::optional<FolderFault>& fault, const L10n& texts) {
  return fault ? textOf(*fault, texts) : QString();
}

QString noteOf(const FolderListing& listing, const L10n& texts) {
  if (listing.folder.empty() || !listing.names.empty()) return {};
  return listing.isReadable ? texts.text("There are no folders in here.") : texts.text("This folder cannot be read.");
}

QString nameOf(const std::filesystem::path& folder, const L10n& texts) {
  if (folder.empty()) return {};
  return folder.has_filename() ? ContentText::path(folder.filename()) : texts.text("Computer");
}

}  // namespace

FolderChooserContent FolderChooserContent::of(const FolderBrowserState& state, const L10n& texts) {
  FolderChooserContent content;
  content.name = nameOf(state.listing.folder, texts);
  content.path = ContentText::path(state.listing.folder);
  for (const std::filesystem::path& name : state.listing.names) content.folders.append(ContentText::path(name));
  content.current = static_cast<int>(state.current);
  content.note = noteOf(state.listing, texts);
  for (const FolderPlace& place : state.places) {
    const bool isShown = content.place < 0 && place.folder == state.listing.folder;
    if (isShown) content.place = static_cast<int>(content.places.size());
    content.places.append(nameOf(place, texts));
    content.placeSymbols.append(symbolOf(place.kind));
  }
  content.canGoUp = state.listing.folder.has_relative_path();
  content.isReading = state.isReading;
  content.pathFault = textOf(state.pathFault, texts);
  content.nameFault = textOf(state.nameFault, texts);
  return content;
}
