#pragma once

#include <functional>
#include <future>

#include "Tidewell/Session/ExportSession.h"

// Reading the chats of the chosen backup, which unlocks an encrypted one.
class ChatScan {
 public:
  explicit ChatScan(ExportSession& session) : session_(session) {}
  ~ChatScan();
  ChatScan(const ChatScan&) = delete;
  ChatScan& operator=(const ChatScan&) = delete;

  // Does nothing unless the backup is chosen and its password known. `then` is called when the chats were read and
  // the wizard has gone on to the options.
  void start(const std::function<void()>& then);
  // Asks an unlock under way to stop.
  void cancelUnlock();

 private:
  struct Reading;
  struct Work;

  void take(std::future<Reading> reading, const std::function<void()>& then);

  ExportSession& session_;
};
