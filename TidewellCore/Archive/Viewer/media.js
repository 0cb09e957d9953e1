// What a message's file looks like: pictures, players, documents, and their absence.
// Boxes have their size before anything is loaded, so that nothing ever jumps.

const KINDS = {
  photos: { label: "photo", gone: "photoNotExported", missing: "missingImage", icon: "photo" },
  stickers: { label: "sticker", gone: "stickerNotExported", missing: "missingSticker", icon: "sticker" },
  videos: { label: "video", gone: "videoNotExported", missing: "missingVideo", icon: "video" },
  voiceNotes: {
    label: "voiceNote",
    gone: "voiceNoteNotExported",
    missing: "missingVoiceNote",
    icon: "voice",
  },
  documents: { label: "document", gone: "documentNotExported", missing: "missingFile", icon: "document" },
};

const kindOf = (media) => KINDS[Object.hasOwn(KINDS, media.kind) ? media.kind : "documents"];

// Paths that failed to load once are not asked for again.
const missingPaths = new Set();

const endingOf = (name) => (/\.([\p{L}\p{N}]{1,5})$/u.exec(name) || ["", ""])[1].toLowerCase();
const LONGEST_NAME = 255;

// What its sender called a document: the first line of the text, when it ends as the file does.
function sentName({ media, text: words }) {
  if (!media || kindOf(media) !== KINDS.documents || !media.exported || !media.path || !words) return "";
  const [name] = words.split("\n", 1);
  const ending = endingOf(media.path);
  return ending && name.length <= LONGEST_NAME && endingOf(name) === ending ? name : "";
}

// `later` (a list) collects what to load once scrolling rests; null loads at once.
function mediaOf(message, { later, query }) {
  const { media } = message;
  const kind = kindOf(media);
  if (!media.exported || !media.path) return absence(kind.gone, kind.icon);
  const made = element("div.media.media-" + kind.label, {});
  if (missingPaths.has(media.path)) made.append(missing(media, kind));
  else if (kind === KINDS.documents) documentIn(made, media, sentName(message), query);
  else makers[kind.label](made, media, later, kind);
  return made;
}

function absence(key, iconName) {
  return element("span.absent", {}, icon(iconName), element("span", {}, text(key)));
}

// Browsers do not tell a file that is gone from one of a format they lack, so the way to
// it stays open.
function missing(media, kind) {
  return element(
    "a.absent",
    { href: addressOf(media.path), target: "_blank", rel: "noopener noreferrer", title: text("openOriginal") },
    icon(kind.icon),
    element("span", {}, text(kind.missing)),
  );
}

function whenMissing(loaded, made, media, kind) {
  loaded.addEventListener("error", () => {
    missingPaths.add(media.path);
    made.replaceChildren(missing(media, kind));
  });
}

// A picture that scrolled by before scrolling rested is never loaded.
function loadNowOrLater(later, picture, path) {
  const load = () => (picture.src = addressOf(path));
  if (later) later.push(() => picture.isConnected && load());
  else load();
}

function pictureIn(made, media, later, kind) {
  const picture = element("img", { alt: "", decoding: "async", draggable: false });
  whenMissing(picture, made, media, kind);
  picture.addEventListener("load", () => made.classList.add("loaded"));
  loadNowOrLater(later, picture, media.path);
  made.append(element("button.picture", { type: "button", "aria-label": text(kind.label) }, picture));
}

// Only the players in view ask for their first frame, see `playersRest`.
function videoIn(made, media, later, kind) {
  const video = element("video", {
    controls: true,
    preload: "none",
    playsInline: true,
    "aria-label": text("video"),
  });
  whenMissing(video, made, media, kind);
  video.src = addressOf(media.path);
  made.append(video);
}

function voiceIn(made, media, later, kind) {
  const audio = element("audio", { controls: true, preload: "none", "aria-label": text("voiceNote") });
  whenMissing(audio, made, media, kind);
  audio.src = addressOf(media.path);
  const address = addressOf(media.path);
  const download = element(
    "a.download",
    { href: address, download: media.name || "", target: "_blank", rel: "noopener noreferrer" },
    icon("download"),
    text("downloadAudio"),
  );
  made.append(audio, download);
}

// Nothing loads a document, so a page opened from disk cannot tell that its file is missing.
function documentIn(made, media, called, query) {
  const name = media.name || media.path.split("/").at(-1);
  const ending = endingOf(name);
  const kindMark = element("span.document-mark.tone-" + toneOf(ending), { "aria-hidden": "true" });
  kindMark.append(icon("document"));
  made.append(
    element(
      "a.document",
      { href: addressOf(media.path), target: "_blank", rel: "noopener noreferrer", title: name },
      kindMark,
      element(
        "span.document-lines",
        {},
        fact("span.document-name", called || name, called ? query : ""),
        element("span.document-kind", {}, text("document") + (ending ? " · " + ending.toUpperCase() : "")),
      ),
    ),
  );
}

const makers = {
  photo: pictureIn,
  sticker: pictureIn,
  video: videoIn,
  voiceNote: voiceIn,
};

// When scrolling rests, players that are there ask for their length and first frame.
function playersRest(view) {
  for (const player of view.querySelectorAll("video[preload=none], audio[preload=none]")) {
    player.preload = "metadata";
  }
}
