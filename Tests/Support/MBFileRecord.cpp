#include "Tests/Support/MBFileRecord.h"

#include <string>
#include <utility>

#include "Tests/Support/PlistWriter.h"

namespace Fixture {

namespace {

// The archive's object table; references are indices into it.
class ObjectTable {
 public:
  PlistUID add(PlistValue object) {
    objects_.push_back(std::move(object));
    return {objects_.size() - 1};
  }

  PlistUID addClass(const std::string& name, PlistArray lineage) {
    return add(PlistDictionary{{"$classname", name}, {"$classes", std::move(lineage)}});
  }

  void replace(PlistUID uid, PlistValue object) { objects_[uid.value] = std::move(object); }

  PlistArray take() { return std::move(objects_); }

 private:
  PlistArray objects_ = {"$null"};
};

PlistUID addKey(ObjectTable& table, const Bytes& key) {
  const PlistUID data = table.add("");
  const PlistUID dataClass = table.addClass("NSMutableData", PlistArray{"NSMutableData", "NSData", "NSObject"});
  table.replace(data, PlistDictionary{{"NS.data", key}, {"$class", dataClass}});
  return data;
}

}  // namespace

Bytes archive(const MBFileRecord& record) {
  ObjectTable table;
  const PlistUID root = table.add("");
  PlistDictionary file = {{"LastModified", record.modified},
                          {"Flags", 0},
                          {"GroupID", 501},
                          {"LastStatusChange", record.modified},
                          {"RelativePath", table.add(record.relativePath)},
                          {"Birth", record.modified},
                          {"Mode", record.mode},
                          {"UserID", 501},
                          {"InodeNumber", record.inode},
                          {"ProtectionClass", record.protectionClass}};
  if (record.size) file.emplace_back("Size", *record.size);
  if (record.encryptionKey) file.emplace_back("EncryptionKey", addKey(table, *record.encryptionKey));
  file.emplace_back("$class", table.addClass("MBFile", PlistArray{"MBFile", "NSObject"}));
  table.replace(root, std::move(file));
  return binaryPlist(PlistDictionary{{"$version", 100000},
                                     {"$archiver", "NSKeyedArchiver"},
                                     {"$top", PlistDictionary{{"root", root}}},
                                     {"$objects", table.take()}});
}

}  // namespace Fixture
