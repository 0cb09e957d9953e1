#pragma once

#include <QObject>
#include <QPointer>
#include <QString>
#include <exception>
#include <filesystem>
#include <functional>
#include <future>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

#include "Tidewell/Services/L10n.h"
#include "Tidewell/Services/PlatformServices.h"
#include "Tidewell/Services/ScopedAccess.h"
#include "Tidewell/Session/BackgroundWork.h"
#include "Tidewell/Session/CancellationToken.h"
#include "Tidewell/Session/ExportState.h"
#include "TidewellCore/Export/ExportPreferences.h"
#include "TidewellCore/Platform/Cancellation.h"

// What the parts of the wizard share: the one state, the one way to change it,
// and the means for that. Lives on the interface thread; slow calls run
// elsewhere, and their results are dropped when it is gone by then.
class ExportSession : public QObject {
  Q_OBJECT

 public:
  struct Setup {
    PlatformServices services;
    L10n texts;
    std::optional<std::filesystem::path> preferencesURL;  // absent: in the user's application-support folder
  };

  // `work` must outlive it.
  ExportSession(Setup setup, BackgroundWork& work);
  ~ExportSession() override;

  const ExportState& state() const { return state_; }
  const PlatformServices& services() const { return services_; }
  const L10n& texts() const { return texts_; }

  // Changes one property, and tells of it when it has another value now.
  template <typename Value>
  void set(Value ExportState::*property, std::type_identity_t<Value> value) {
    if (state_.*property == value) return;
    const Batch batch(*this);
    state_.*property = std::move(value);
    hasChanged_ = true;
  }

  // While one lives, changes are collected; they are told as one when the last has gone.
  class Batch {
   public:
    explicit Batch(ExportSession& session) : session_(session) { ++session_.batchCount_; }
    ~Batch() { session_.endBatch(); }
    Batch(const Batch&) = delete;
    Batch& operator=(const Batch&) = delete;

   private:
    ExportSession& session_;
  };

  // Calls `work` on a worker thread, then `done` with its future, which is ready, here; what that changes is told
  // as one change.
  template <typename Work, typename Done>
  void inBackground(BackgroundWork::Lane lane, Work work, Done done) {
    work_.run(lane, this, std::move(work), [this, done = std::move(done)](auto future) mutable {
      const Batch batch(*this);
      done(std::move(future));
    });
  }
  // For what is kept for later: passwords and preferences. Failures are ignored.
  void keepInOrder(std::function<void()> work);
  // A function that any thread may call at any time: `action` is then called here, after everything posted before,
  // unless this is gone by then.
  template <typename Value>
  std::function<void(Value)> posting(std::function<void(Value)> action) {
    return [this, self = QPointer<QObject>(this), action = std::move(action)](Value value) {
      post([this, self, action, value = std::move(value)] {
        if (!self) return;
        const Batch batch(*this);
        action(value);
      });
    };
  }
  // Asked by work that nobody needs any more when this is gone.
  CancellationCheck isGone() const;
  static CancellationCheck checkOf(std::shared_ptr<CancellationToken> token);

  // Asks the user for a folder, and takes it when one is chosen.
  void chooseFolder(const FolderRequest& request, const std::function<void(const std::filesystem::path&)>& take);
  // Ends when what it returns is gone.
  std::unique_ptr<ScopedAccess> startAccess(const std::filesystem::path& folder) const;
  // Where a bookmarked folder stands today.
  std::optional<std::filesystem::path> resolved(const std::optional<Bytes>& bookmark) const;
  // For as long as somebody looks at what `resolved` said.
  std::shared_ptr<ScopedAccess> accessWhileLooking(const std::optional<std::filesystem::path>& folder) const;

  const std::filesystem::path& preferencesURL() const { return preferencesURL_; }
  const ExportPreferences& preferences() const { return preferences_; }
  void rememberBackup(const std::filesystem::path& folder);
  void rememberDestination(const std::filesystem::path& folder);

  std::string translated(std::string_view english) const;
  void present(const std::exception& error);
  void clearError();

 signals:
  // Some property of the state has a new value.
  void changed();

 private:
  void endBatch();
  // Any thread. Dropped when the application is at its end.
  static void post(std::function<void()> action);
  void savePreferences();

  PlatformServices services_;
  L10n texts_;
  BackgroundWork& work_;
  ExportState state_;
  int batchCount_ = 0;
  bool hasChanged_ = false;
  std::shared_ptr<CancellationToken> lifetime_ = std::make_shared<CancellationToken>();
  std::filesystem::path preferencesURL_;
  ExportPreferences preferences_;
};
