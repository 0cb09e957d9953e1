// Numbers, times, dates, colours and addresses as people read them.

const LANGUAGE = (() => {
  const wanted = STRINGS.language || FALLBACK.language;
  try {
    return Intl.getCanonicalLocales(wanted)[0] || FALLBACK.language;
  } catch {
    return FALLBACK.language;
  }
})();

// The phone's time zone when this browser knows it, else the browser's own.
const TIME_ZONE = (() => {
  try {
    return new Intl.DateTimeFormat("en", { timeZone: ARCHIVE.timeZone }).resolvedOptions().timeZone;
  } catch {
    return undefined;
  }
})();

// The page's words with the habits of the region that the export was made in: English in Germany has 24 hours.
const REGION = /^([A-Z]{2}|\d{3})$/.test(ARCHIVE.region) ? ARCHIVE.region : "";
const DATE_LOCALE = REGION ? new Intl.Locale(LANGUAGE, { region: REGION }).toString() : LANGUAGE;
const dateFormat = (options) => new Intl.DateTimeFormat(DATE_LOCALE, { timeZone: TIME_ZONE, ...options });

const PLURALS = new Intl.PluralRules(LANGUAGE);
const NUMBER = new Intl.NumberFormat(LANGUAGE);
// Archives without a region have the habits of their language.
const HOUR_12 = REGION ? undefined : !LANGUAGE.toLowerCase().startsWith("pt");
const TIME = dateFormat({ hour: "numeric", minute: "2-digit", hour12: HOUR_12 });
const SHORT_DATE = dateFormat(REGION ? { dateStyle: "short" } : { year: "2-digit", month: "numeric", day: "numeric" });
const WEEKDAY = dateFormat({ weekday: "long" });
const LONG_DATE = dateFormat({ weekday: "long", year: "numeric", month: "long", day: "numeric" });
const FULL_DATE = dateFormat({ dateStyle: "full", timeStyle: "short", hour12: HOUR_12 });
const RELATIVE_DAY = new Intl.RelativeTimeFormat(LANGUAGE, { numeric: "auto" });
const DAY_PARTS = new Intl.DateTimeFormat("en-u-nu-latn-ca-gregory", {
  timeZone: TIME_ZONE,
  year: "numeric",
  month: "2-digit",
  day: "2-digit",
  era: "short",
});
const DAY_SECONDS = 86400;

// The data is somebody else's: a time outside what dates can hold counts as none.
function hasTime(seconds) {
  return typeof seconds === "number" && Math.abs(seconds) <= 8.64e12 - DAY_SECONDS;
}

const dateOf = (seconds) => new Date(seconds * 1000);

function formatNumber(value) {
  return typeof value === "number" ? NUMBER.format(value) : String(value);
}

// A text with a number in it, in the form that the number asks for.
function countText(one, many, n) {
  return text(PLURALS.select(n) === "one" ? one : many, { n });
}

// "" for a group, for what is no telephone number, and where it is the chat's name.
function numberOf(chat) {
  const digits = /^(\d{5,15})@s\.whatsapp\.net$/.exec(chat.jid || "");
  return digits && (chat.name || "").replace(/\D/g, "") !== digits[1] ? "+" + digits[1] : "";
}

function formatTime(seconds) {
  return TIME.format(dateOf(seconds));
}

// "0:07", "1:02:03".
function formatDuration(seconds) {
  const two = (value) => String(value).padStart(2, "0");
  const [hours, minutes] = [Math.floor(seconds / 3600), Math.floor(seconds / 60) % 60];
  const rest = two(seconds % 60);
  return hours ? `${hours}:${two(minutes)}:${rest}` : `${minutes}:${rest}`;
}

function formatMoment(seconds) {
  return FULL_DATE.format(dateOf(seconds));
}

// The day in the archive's zone as a count of days since 1970-01-01.
function dayNumber(seconds) {
  const parts = {};
  for (const { type, value } of DAY_PARTS.formatToParts(dateOf(seconds))) parts[type] = value;
  const year = parts.era === "BC" ? 1 - Number(parts.year) : Number(parts.year);
  const day = new Date(0);
  day.setUTCFullYear(year, Number(parts.month) - 1, Number(parts.day));
  return Math.round(day.getTime() / 1000 / DAY_SECONDS);
}

function daysAgo(seconds) {
  return dayNumber(Date.now() / 1000) - dayNumber(seconds);
}

function capitalised(string) {
  return string.charAt(0).toLocaleUpperCase(LANGUAGE) + string.slice(1);
}

// In a list: the time alone today, then yesterday, the week's days, and short dates.
function formatListDate(seconds) {
  const days = daysAgo(seconds);
  if (days === 0) return formatTime(seconds);
  if (days === 1) return capitalised(RELATIVE_DAY.format(-1, "day"));
  if (days > 1 && days < 7) return capitalised(WEEKDAY.format(dateOf(seconds)));
  return SHORT_DATE.format(dateOf(seconds));
}

function formatDay(seconds) {
  const days = daysAgo(seconds);
  if (days === 0 || days === 1) return capitalised(RELATIVE_DAY.format(-days, "day"));
  return capitalised(LONG_DATE.format(dateOf(seconds)));
}

// A date field's value (2024-05-31) for a moment.
function dateFieldValue(seconds) {
  return new Date(dayNumber(seconds) * DAY_SECONDS * 1000).toISOString().slice(0, 10);
}

// The first second of a day, found between the zones that are furthest ahead and behind.
function startOfDay(day) {
  let [early, late] = [(day - 1) * DAY_SECONDS, (day + 1) * DAY_SECONDS];
  while (late - early > 1) {
    const middle = Math.floor((early + late) / 2);
    if (dayNumber(middle) < day) early = middle;
    else late = middle;
  }
  return late;
}

function dayNumberOfField(value) {
  const milliseconds = Date.parse(value + "T00:00:00Z");
  return Number.isNaN(milliseconds) ? null : Math.round(milliseconds / 1000 / DAY_SECONDS);
}

const TONES = 12;

// The same name always gets the same tone, in every archive.
function toneOf(name) {
  let hash = 2166136261;
  for (let at = 0; at < name.length; at++) {
    hash = Math.imul(hash ^ name.charCodeAt(at), 16777619);
  }
  return ((hash ^ (hash >>> 15)) >>> 0) % TONES;
}

// Up to two first letters; none for a name without letters (a phone number, say).
function initialsOf(name) {
  const words = name.match(/\p{L}[\p{L}\p{M}'’.-]*/gu) || [];
  const first = words[0];
  const last = words.length > 1 ? words.at(-1) : undefined;
  return [first, last]
    .filter(Boolean)
    .map((word) => word.match(/^\p{L}\p{M}*/u)[0].toLocaleUpperCase(LANGUAGE))
    .join("");
}

// A path of the data as a relative address: "#", "%", "?" and blanks would end or
// change it, so each part is encoded; empty parts in front would lead to another host.
function addressOf(path) {
  const parts = path.split("/").filter((part) => part !== "");
  return BASE + parts.map(encodePart).join("/");
}

// A lone surrogate cannot be encoded; it becomes U+FFFD as everywhere else.
function encodePart(part) {
  return encodeURIComponent(
    part.replace(/[\ud800-\udbff](?![\udc00-\udfff])|(?<![\ud800-\udbff])[\udc00-\udfff]/g, "\ufffd"),
  );
}
