// A message as a line of a block. Nothing else knows what stands in a line: all others
// ask here, for what they need and no more, since a search asks a million lines.
//
// A form knows a line's id, time and text, as JSON or "" where there is none, and how it
// is made of a message and read.

// The id, the time, the text and the rest of the message as an object, parted by tabs,
// which JSON never holds.
const COLUMNS = {
  id: (line) => line.slice(0, line.indexOf("\t")),
  time(line) {
    const start = line.indexOf("\t") + 1;
    return line.slice(start, line.indexOf("\t", start));
  },
  text(line) {
    const start = line.indexOf("\t", line.indexOf("\t") + 1) + 1;
    return line.slice(start, line.indexOf("\t", start));
  },
  of: ({ id, ts, text, ...others }) => [id, ts, text, others].map((value) => JSON.stringify(value)).join("\t"),
  message(line) {
    const columns = line.split("\t").map((column) => (column === "" ? undefined : JSON.parse(column)));
    const [id, ts, text, others] = columns;
    return { ...others, id, ts, text };
  },
};

// Before archives said their format, a line was the message's JSON: "id" was its first
// key, "text" and "ts" the last ones. Inside JSON strings every quote has a backslash
// before it, so the marks below stand only where the keys are.
const OBJECT = {
  id: (line) => line.slice('{"id":'.length, line.indexOf('","') + 1),
  time(line) {
    const mark = ',"ts":';
    const start = line.lastIndexOf(mark);
    return start < 0 ? "" : line.slice(start + mark.length, -1);
  },
  text(line) {
    const mark = ',"text":';
    const start = line.indexOf(mark + '"');
    if (start < 0) return "";
    const timeMark = line.lastIndexOf('","ts":');
    return line.slice(start + mark.length, timeMark > start ? timeMark + 1 : -1);
  },
  of: (message) => JSON.stringify(message),
  message: (line) => JSON.parse(line),
};

// The form of this archive's lines; absent for an archive of a later format.
const LINE = new Map([
  [undefined, OBJECT],
  [2, COLUMNS],
]).get(ARCHIVE.format);

// The string that `json` holds, "" for anything else.
function stringIn(json) {
  if (!json.startsWith('"')) return "";
  return json.includes("\\") ? JSON.parse(json) : json.slice(1, -1);
}

const idOfLine = (line) => stringIn(LINE.id(line));
const textOfLine = (line) => stringIn(LINE.text(line));
// A text as it is read: with the names of the people mentioned in it.
function wordsOfLine(line) {
  const words = textOfLine(line);
  return words.includes("@") && mayMention(line) ? withNames(messageOfLine(line)) : words;
}
// A quote inside a JSON string has a backslash before it, so these stand only where keys are.
const mayHaveMedium = (line) => line.includes('"media":{');
const mayMention = (line) => line.includes('"mentions":{');
const mayBeNotice = (line) => line.includes('"kind":"notice"');
const lineOf = (message) => LINE.of(message);

// -Infinity for an undated message, which comes last in every order by time.
function timeOfLine(line) {
  const json = LINE.time(line);
  const seconds = json === "" ? NaN : Number(json);
  return hasTime(seconds) ? seconds : -Infinity;
}

function messageOfLine(line) {
  try {
    return asMessage(LINE.message(line));
  } catch {
    return {};
  }
}
