// What a message is when it is more than a text or a file: a card, a poll, a call. A kind
// that is not known here, or whose facts are damaged, is shown in its words, which `text`
// always holds.

// The facts' caption stands under the card; {content, caption} or null for a plain message.
function kindOfMessage(message, query) {
  if (!message.kind || !Object.hasOwn(KIND_MAKERS, message.kind) || !message.text) return null;
  const info = infoOf(message);
  const content = KIND_MAKERS[message.kind](info, message, query);
  return content && { content, caption: isText(info.caption) ? info.caption : "" };
}

// The words of the kind, without the caption that follows them.
function kindWords({ text: all }, { caption }) {
  return isText(caption) && all.endsWith("\n" + caption) ? all.slice(0, -caption.length - 1) : all;
}

const LONGEST_FACT = 2000;

function shownFact(string) {
  return string.length <= LONGEST_FACT ? string : string.slice(0, wholeCharacter(string, LONGEST_FACT)) + "…";
}

// A line of a card with the query's marks; null for what is not there.
function fact(selector, words, query) {
  if (!isText(words)) return null;
  return element(selector, { dir: "auto" }, ...marked(split(shownFact(words), query)));
}

function card(kind, sign, ...lines) {
  return element("div.card." + kind, {}, element("span.card-sign", {}, icon(sign)), element("div.card-lines", {}, ...lines));
}

function linkTo(href, selector, ...children) {
  return element(selector, { href, target: "_blank", rel: "noreferrer noopener" }, ...children);
}

function placeCard(info, message, query) {
  const place = placeIn(info);
  if (!place && !isText(info.name) && !isText(info.address)) return null;
  const title = isText(info.name) ? info.name : text(info.live === true ? "liveLocation" : "location");
  return card(
    "place",
    "place",
    fact("strong.card-title", title, query),
    isText(info.name) && info.live === true ? element("span.card-more", {}, text("liveLocation")) : null,
    fact("span.card-more", info.address, query),
    ...(place ? [coordinates(place, query), mapLink(place)] : []),
  );
}

// Six digits are a hand's breadth; toFixed never writes an exponent.
const degrees = (value) => value.toFixed(6).replace(/^-(?=0\.0+$)|\.?0+$/g, "");

function coordinates({ lat, lon }, query) {
  const words = `${degrees(lat)}, ${degrees(lon)}`;
  return element("span.card-more.figures", { dir: "ltr" }, ...marked(split(words, query)));
}

function mapLink({ lat, lon }) {
  const [north, east] = [degrees(lat), degrees(lon)];
  const href = `https://www.openstreetmap.org/?mlat=${north}&mlon=${east}#map=16/${north}/${east}`;
  return linkTo(href, "a.card-link", icon("open"), text("openMap"));
}

function contactCards(info, message, query) {
  const people = recordsIn(info.people).slice(0, 100);
  if (people.length === 0) return null;
  return element("div.cards", {}, ...people.map((person) => contactCard(person, query)));
}

function contactCard({ name, phones, emails }, query) {
  const shown = isText(name) ? name : "";
  return element(
    "div.card.contact",
    {},
    avatarOf({ name: shown }),
    element(
      "div.card-lines",
      {},
      fact("strong.card-title", shown || text("contact"), query),
      ...[...textsIn(phones), ...textsIn(emails)].slice(0, 50).map((way) => wayTo(way, query)),
    ),
  );
}

// A number or an address, to be called or written to when it is safe to.
function wayTo(way, query) {
  const words = marked(split(shownFact(way), query));
  const href = safeAddress(way, ["tel:", "mailto:"]);
  return href
    ? linkTo(href, "a.card-way", element("bdi", {}, ...words))
    : element("bdi.card-way", {}, ...words);
}

function pollCard(info, message, query) {
  const options = recordsIn(info.options).filter(({ words }) => isText(words));
  if (options.length === 0) return null;
  const votes = options.map(({ names }) => textsIn(names));
  const all = votes.reduce((sum, names) => sum + names.length, 0);
  return element(
    "div.poll",
    {},
    element("div.poll-head", {}, icon("poll"), fact("strong.card-title", info.question, query) || text("poll")),
    element("ul.poll-options", {}, ...options.map(({ words }, at) => pollOption(words, votes[at], all, query))),
    element("div.poll-votes", {}, text("votes", { n: all })),
  );
}

function pollOption(words, names, all, query) {
  const bar = element("span.poll-bar", { "aria-hidden": "true" }, element("span.poll-part"));
  bar.firstChild.style.width = (all ? (names.length / all) * 100 : 0) + "%";
  const who = names.join(", ");
  return element(
    "li",
    { title: who },
    element(
      "span.poll-line",
      {},
      fact("span.poll-words", words, query),
      element("span.poll-count", { "aria-label": text("votes", { n: names.length }), role: "img" }, formatNumber(names.length)),
    ),
    bar,
    fact("span.poll-names", who, query),
  );
}

function callPill(info, message, query) {
  const missed = info.missed === true;
  const made = element("div.call" + (missed ? ".missed" : ""), {});
  const direction = icon(message.me ? "outgoing" : "incoming");
  const sign = element("span.card-sign", {}, icon(info.video === true ? "video" : "call"));
  made.append(sign, direction, fact("span.call-words", kindWords(message, info), query));
  return made;
}

const QUIET_SIGNS = { deleted: "deleted", waiting: "waiting", unsupported: "unknown" };

function quietLine(info, message, query) {
  return element("div.quiet-line", {}, icon(QUIET_SIGNS[message.kind]), fact("span", kindWords(message, info), query));
}

// A medium that the backup lacks: what it was, and what is known of it.
function missingFrame(info, message, query) {
  const part = partOf(info.part);
  if (!part) return null;
  const { seconds } = info;
  const length = Number.isSafeInteger(seconds) && seconds > 0 ? formatDuration(seconds) : null;
  return element(
    "div.missing",
    {},
    icon(part.icon),
    element(
      "div.card-lines",
      {},
      element("span.missing-part", {}, [text(part.label), length].filter(Boolean).join(", ")),
      fact("span.card-more", info.name, query),
      element("span.card-more", {}, text("notInBackup")),
    ),
  );
}

function inviteCard(info, message, query) {
  if (!isText(info.group)) return card("invite", "group", fact("strong.card-title", kindWords(message, info), query));
  return card("invite", "group", fact("strong.card-title", info.group, query), element("span.card-more", {}, text("invite")));
}

function productCard(info, message, query) {
  if (!isText(info.title)) return null;
  return card(
    "product",
    "product",
    fact("strong.card-title", info.title, query),
    fact("span.card-price", info.price, query),
    fact("span.card-more", info.description, query),
  );
}

// The words without the lines that name the buttons, which follow as what they are.
function businessText(info, message, query) {
  const buttons = recordsIn(info.buttons).filter(({ words }) => isText(words)).slice(0, 50);
  const heads = buttons.map(({ words }) => `[${words}]`);
  const lines = kindWords(message, info).split("\n");
  while (heads.some((head) => lines.at(-1)?.startsWith(head))) lines.pop();
  const said = lines.join("\n");
  return element(
    "div.business",
    {},
    said && element("div.text", { dir: "auto" }, element("span.body", {}, ...richText(shownText(said), query))),
    ...buttons.map((button) => businessButton(button, query)),
  );
}

function businessButton({ words, url }, query) {
  const href = isText(url) ? safeAddress(url, ["https:", "http:", "mailto:", "tel:"]) : null;
  const label = fact("bdi", words, query);
  return href ? linkTo(href, "a.business-button", icon("open"), label) : element("span.business-button", {}, label);
}

const KIND_MAKERS = {
  place: placeCard,
  contacts: contactCards,
  poll: pollCard,
  call: callPill,
  deleted: quietLine,
  waiting: quietLine,
  unsupported: quietLine,
  missing: missingFrame,
  invite: inviteCard,
  product: productCard,
  business: businessText,
};

// Under the text that holds the link: what its page said of itself when it was sent.
function linkPreview(message, query) {
  const { link } = infoOf(message);
  if (!isRecord(link)) return null;
  const isAddressTold = !isText(link.url) || (message.text || "").includes(link.url);
  if (!isText(link.title) && !isText(link.summary) && isAddressTold) return null;
  const written = isText(link.url) ? link.url : cutAtLinks(shownText(message.text || "")).find(({ href }) => href)?.href;
  const href = written ? safeAddress(written, ["https:", "http:"]) : null;
  const lines = [
    fact("strong.preview-title", link.title, query),
    fact("span.preview-summary", link.summary, query),
    href ? element("span.preview-host", { dir: "ltr" }, new URL(href).host) : null,
  ];
  return href ? linkTo(href, "a.preview", ...lines) : element("div.preview", {}, ...lines);
}
