#include "TidewellCore/ChatData/MessageColumns.h"

#include <algorithm>
#include <array>
#include <set>
#include <string>

namespace {

// A column that is due in a table that has another, which is as old.
struct Due {
  const char* table = "";
  const char* column = "";
  const char* beside = "Z_PK";
};

constexpr std::array allDue{
    Due{"ZWAMESSAGE", "ZMESSAGETYPE"},
    Due{"ZWAMESSAGE", "ZGROUPEVENTTYPE"},
    Due{"ZWAMEDIAITEM", "ZTITLE"},
    Due{"ZWAMEDIAITEM", "ZVCARDSTRING"},
    Due{"ZWAMEDIAITEM", "ZVCARDNAME"},
    Due{"ZWAMEDIAITEM", "ZLATITUDE"},
    Due{"ZWAMEDIAITEM", "ZLONGITUDE"},
    Due{"ZWAMEDIAITEM", "ZMOVIEDURATION"},
    Due{"ZWAMEDIAITEM", "ZMETADATA", "ZMEDIAKEY"},
    Due{"ZWAMESSAGEINFO", "ZMESSAGE"},
    Due{"ZWAMESSAGEINFO", "ZRECEIPTINFO"},
    Due{"ZWAMESSAGEDATAITEM", "ZMESSAGE"},
    Due{"ZWAMESSAGEDATAITEM", "ZMATCHEDTEXT"},
    Due{"ZWAMESSAGEDATAITEM", "ZTITLE"},
    Due{"ZWAMESSAGEDATAITEM", "ZSUMMARY"},
    Due{"ZWAGROUPINFO", "ZCREATORJID", "ZCREATIONDATE"},
};

}  // namespace

bool MessageColumns::areWhole(const SQLiteDB& database) {
  return std::ranges::none_of(allDue, [&](const Due& due) {
    if (!database.tableExists(due.table)) return false;
    const std::set<std::string> columns = database.columns(due.table);
    return columns.contains(due.beside) && !columns.contains(due.column);
  });
}
