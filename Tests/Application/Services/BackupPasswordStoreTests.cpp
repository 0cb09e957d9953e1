#include "Tidewell/Services/BackupPasswordStore.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <stdio.h>

#include <chrono>
#include <cstdlib>
#include <future>
#include <memory>
#include <string>
#include <string_view>
#include <thread>

#include "TidewellCore/Platform/Bytes.h"

namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

SecretBytes secret(std::string_view text) { return {text.begin(), text.end()}; }

// Loads from a thread that ends with the call.
std::optional<std::string> load(const std::string& account) {
  std::optional<std::string> text;
  std::thread([&] {
    if (const auto password = BackupPasswordStore::load(account)) text.emplace(textOf(*password));
  }).join();
  return text;
}

void save(std::string_view password, const std::string& account) {
  std::thread([&] { BackupPasswordStore::save(secret(password), account); }).join();
}

template <typename Call>
milliseconds duration(Call call) {
  const auto start = std::chrono::steady_clock::now();
  call();
  return std::chrono::duration_cast<milliseconds>(std::chrono::steady_clock::now() - start);
}

std::string outputOf(const std::string& command) {
  const std::unique_ptr<FILE, int (*)(FILE*)> pipe(::popen(command.c_str(), "r"), ::pclose);
  std::string output;
  for (int c = ::fgetc(pipe.get()); c != EOF; c = ::fgetc(pipe.get())) output += static_cast<char>(c);
  return output;
}

// What another program finds under the attributes that QtKeychain gives service and account.
std::string foundByOthers(const std::string& account) {
  return outputOf("secret-tool lookup server Lorewick.backup-password user '" + account + "'");
}

// Run by `with-passwords keyring`.
class PasswordsInAKeyring : public testing::Test {
 protected:
  void SetUp() override {
    const char* pid = std::getenv("TIDEWELL_KEYRING_PID");
    ASSERT_NE(pid, nullptr) << "there is no keyring of its own";
    daemon_ = std::atoi(pid);
  }
  void TearDown() override { ::kill(daemon_, SIGCONT); }

  pid_t daemon_ = 0;
};

TEST_F(PasswordsInAKeyring, AnAccountWithoutPasswordHasNone) { EXPECT_EQ(load("nobody"), std::nullopt); }

TEST_F(PasswordsInAKeyring, KeepsAPasswordForItsAccount) {
  save("correct horse", "phone");
  EXPECT_EQ(load("phone"), "correct horse");
  EXPECT_EQ(load("Phone"), std::nullopt);
  EXPECT_EQ(load("phon"), std::nullopt);
}

TEST_F(PasswordsInAKeyring, SavingAgainReplaces) {
  save("old", "replaced");
  save("new", "replaced");
  EXPECT_EQ(load("replaced"), "new");
  EXPECT_EQ(foundByOthers("replaced"), "new");
}

TEST_F(PasswordsInAKeyring, RemovesOneAccountAlone) {
  save("one", "removed");
  save("two", "kept");
  BackupPasswordStore::remove("removed");
  EXPECT_EQ(load("removed"), std::nullopt);
  EXPECT_EQ(load("kept"), "two");
}

TEST_F(PasswordsInAKeyring, RemovingNothingIsFine) {
  BackupPasswordStore::remove("never there");
  EXPECT_EQ(load("never there"), std::nullopt);
}

TEST_F(PasswordsInAKeyring, KeepsEveryCharacter) {
  const std::string account = "/home/ana/Cópias de segurança/00008110-0001";
  for (const char* password : {"sécrèt ünïcödé", "密码", "🔑🔑", "  spaces  ", "line\nbreak", "\"quotes' $HOME %@"}) {
    save(password, account);
    EXPECT_EQ(load(account), password);
  }
}

TEST_F(PasswordsInAKeyring, OtherProgramsFindItByServiceAndAccount) {
  save("gehëim", "udid");
  EXPECT_EQ(foundByOthers("udid"), "gehëim");
  BackupPasswordStore::remove("udid");
  EXPECT_EQ(foundByOthers("udid"), "");
}

TEST_F(PasswordsInAKeyring, FindsWhatAnotherProgramStored) {
  ASSERT_EQ(outputOf("printf foreign | secret-tool store --label=x server Lorewick.backup-password user other "
                     "type plaintext xdg:schema org.qt.keychain && echo stored"),
            "stored\n");
  EXPECT_EQ(load("other"), "foreign");
}

TEST_F(PasswordsInAKeyring, WhatIsNoTextIsNotKept) {
  save("former", "broken");
  save("\xFF\xFE", "broken");
  EXPECT_EQ(load("broken"), std::nullopt);
}

TEST_F(PasswordsInAKeyring, WaitsForAStoppedStoreNoLongerThanFiveSeconds) {
  save("before", "stopped");
  ASSERT_EQ(::kill(daemon_, SIGSTOP), 0);
  std::optional<std::string> found;
  const milliseconds loading = duration([&] { found = load("stopped"); });
  EXPECT_EQ(found, std::nullopt);
  EXPECT_GE(loading, milliseconds(4900));
  EXPECT_LT(loading, seconds(8));
  EXPECT_LT(duration([] { save("during", "stopped"); }), seconds(8));

  // What was asked meanwhile is done in its order once the store goes on.
  ASSERT_EQ(::kill(daemon_, SIGCONT), 0);
  EXPECT_EQ(load("stopped"), "during");
  EXPECT_LT(duration([&] { found = load("stopped"); }), seconds(2));
  EXPECT_EQ(found, "during");
}

TEST_F(PasswordsInAKeyring, WhatAStoreAnswersLateIsToldAllTheSame) {
  save("kept", "late");
  ASSERT_EQ(::kill(daemon_, SIGSTOP), 0);
  std::promise<std::optional<SecretBytes>> late;
  EXPECT_EQ(BackupPasswordStore::load("late", [&](auto password) { late.set_value(std::move(password)); }),
            std::nullopt);
  ASSERT_EQ(::kill(daemon_, SIGCONT), 0);
  std::future<std::optional<SecretBytes>> answer = late.get_future();
  ASSERT_EQ(answer.wait_for(seconds(10)), std::future_status::ready);
  EXPECT_EQ(answer.get(), secret("kept"));
}

TEST_F(PasswordsInAKeyring, AnAnswerInTimeIsNotToldTwice) {
  save("kept", "in time");
  bool isTold = false;
  EXPECT_EQ(BackupPasswordStore::load("in time", [&](const auto&) { isTold = true; }), secret("kept"));
  load("nobody");  // goes through the same thread after it
  EXPECT_FALSE(isTold);
}

TEST_F(PasswordsInAKeyring, IsThere) {
  EXPECT_TRUE(BackupPasswordStore::isAvailable());
  ASSERT_EQ(::kill(daemon_, SIGSTOP), 0);
  EXPECT_TRUE(BackupPasswordStore::isAvailable()) << "it only takes its time";
}

TEST(PasswordsInNoStore, ThereIsNone) { EXPECT_FALSE(BackupPasswordStore::isAvailable()); }

// Run by `with-passwords nothing` and `with-passwords bus`.
TEST(PasswordsInNoStore, AreNeitherKeptNorWaitedFor) {
  std::optional<std::string> found;
  EXPECT_LT(duration([&] { found = load("phone"); }), seconds(1));
  EXPECT_EQ(found, std::nullopt);
  EXPECT_LT(duration([] { save("secret", "phone"); }), seconds(1));
  EXPECT_LT(duration([] { BackupPasswordStore::remove("phone"); }), seconds(1));
  EXPECT_EQ(load("phone"), std::nullopt);
}

}  // namespace
