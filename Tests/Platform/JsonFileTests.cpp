#include "TidewellCore/Platform/JsonFile.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "Tests/Support/TemporaryDirectory.h"

namespace {

using Fixture::TemporaryDirectory;
using Fixture::writeFile;

TEST(JsonFile, ReadsWhatItWrites) {
  const TemporaryDirectory folder;
  const Json::Object object{{"folders", Json::Object{{"a", "Ana"}}}, {"version", std::int64_t{1}}};
  const std::string content = JsonFile::content(object);
  EXPECT_EQ(content, "{\n  \"folders\": {\n    \"a\": \"Ana\"\n  },\n  \"version\": 1\n}\n");
  writeFile(folder / "file.json", content);
  EXPECT_EQ(JsonFile::readIfThere(folder / "file.json", 1000), object);
}

TEST(JsonFile, AnythingElseIsAsGoodAsNotThere) {
  const TemporaryDirectory folder;
  EXPECT_FALSE(JsonFile::readIfThere(folder / "missing", 1000));
  EXPECT_FALSE(JsonFile::readIfThere(folder.path(), 1000));
  for (const char* content : {"", "[]", "\"text\"", "{", "{} {}"}) {
    writeFile(folder / "file.json", content);
    EXPECT_FALSE(JsonFile::readIfThere(folder / "file.json", 1000)) << content;
  }
  writeFile(folder / "file.json", "{}");
  EXPECT_TRUE(JsonFile::readIfThere(folder / "file.json", 2));
  EXPECT_FALSE(JsonFile::readIfThere(folder / "file.json", 1));
}

}  // namespace
