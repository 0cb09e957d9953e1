#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "TidewellCore/Platform/Json.h"

// A message as a line of a block (docs/formats/chat-archive.md): what the viewer
// asks of every line stands in columns of its own, so that no other member of a
// message can be taken for it. Viewer/line.js is the other place that knows lines.
namespace MessageLine {

// Which form an archive's lines have, by the number in its `format`.
enum class Form {
  object = 1,   // the JSON of the message, in archives that say no number
  columns = 2,  // written today
};

// The form that an archive says; absent for one that is not known here.
std::optional<Form> form(const Json::Object& archive);

// Puts the line of a message at the end of `text`.
void append(std::string& text, Json::Object message, Form form = Form::columns);
// The message of a line; absent when it is none.
std::optional<Json::Object> message(std::string_view line, Form form = Form::columns);

}  // namespace MessageLine
