#pragma once

#include "TidewellCore/Platform/SQLiteDB.h"

// The columns on which the kinds of messages hang: where one is gone, messages are read and say less.
namespace MessageColumns {

// Whether the tables of a chat database have those that are known of every version, and those
// that came with a table or with another column. A table that is not there lacks none.
bool areWhole(const SQLiteDB& database);

}  // namespace MessageColumns
