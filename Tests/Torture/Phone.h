#pragma once

#include <filesystem>
#include <set>
#include <string>
#include <vector>

#include "Tests/Support/BackupBuilder.h"
#include "Tests/Support/SeededRandom.h"

namespace Torture {

// A medium, or a profile picture, that is on the phone.
struct Medium {
  std::string sha1;  // of its content; no two are alike
  std::string mark;  // stands in its name; media of one name share it
  std::string jid;   // of its chat
};

// A text that is on the phone; no two are alike.
struct Text {
  std::string mark;  // stands in it, and nowhere else
  std::string jid;
};

// A phone that is used from backup to backup. All of it comes from the random numbers.
class Phone {
 public:
  explicit Phone(Fixture::SeededRandom& random);

  // People write, rename and leave; returns what happened.
  std::string change();
  void write(const std::filesystem::path& backup) const;

  bool isEncrypted() const { return contents_.encryption.has_value(); }
  const Fixture::BackupContents& contents() const { return contents_; }
  std::vector<Medium> media() const;
  std::vector<Medium> pictures() const;
  std::vector<Text> texts() const;
  std::size_t messageCount() const { return contents_.whatsApp.messages.size(); }

 private:
  void addChat();
  void addMessages(std::size_t count);
  void addMedia(std::size_t count);
  void addMedium();
  void removeChat();
  void renameChat();
  std::string jidOf(std::int64_t chat) const;
  std::size_t freshSize();

  Fixture::SeededRandom& random_;
  Fixture::BackupContents contents_;
  std::set<std::size_t> sizes_;
  std::int64_t lastChat_ = 0;
  std::int64_t lastMessage_ = 0;
  int lastMedium_ = 0;
};

}  // namespace Torture
