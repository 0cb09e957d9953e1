#include "Tidewell/Services/BackupPasswordStore.h"

#include <qt6keychain/keychain.h>

#include <QThread>
#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <utility>

#include "TidewellCore/Platform/Bytes.h"
#include "TidewellCore/Platform/Text.h"

namespace {

using PasswordAnswer = std::function<void(std::optional<SecretBytes>)>;

constexpr std::chrono::seconds patience(5);

// Brings the store's one answer to whoever waits for it, or to `late` when nobody does any more.
class Answer {
 public:
  explicit Answer(PasswordAnswer late) : late_(std::move(late)) {}

  // The store's thread.
  void give(std::optional<SecretBytes> password) {
    {
      const std::lock_guard guard(lock_);
      if (!gaveUp_) {
        password_ = std::move(password);
        isThere_ = true;
        return arrived_.notify_all();
      }
    }
    if (late_) late_(std::move(password));
  }

  std::optional<SecretBytes> wait() {
    std::unique_lock guard(lock_);
    if (arrived_.wait_for(guard, patience, [this] { return isThere_; })) return std::move(password_);
    gaveUp_ = true;
    return std::nullopt;
  }

 private:
  std::mutex lock_;
  std::condition_variable arrived_;
  bool isThere_ = false;
  bool gaveUp_ = false;
  std::optional<SecretBytes> password_;
  PasswordAnswer late_;
};

// QtKeychain keeps one queue for the whole process, in the thread that used it
// first. All jobs run in this thread, which is never ended: an answer that comes
// after nobody waits for it must still be taken, or every later job would wait behind it.
QObject& keychain() {
  static QObject* const context = [] {
    auto* const thread = new QThread;
    auto* const object = new QObject;
    object->moveToThread(thread);
    thread->start();
    return object;
  }();
  return *context;
}

// Lets `startJobs` begin in that thread, and waits for the answer that it arranges.
template <typename StartJobs>
std::optional<SecretBytes> answerOf(StartJobs startJobs, PasswordAnswer late = {}) {
  const auto answer = std::make_shared<Answer>(std::move(late));
  QMetaObject::invokeMethod(
      &keychain(), [answer, startJobs = std::move(startJobs)] { startJobs(answer); }, Qt::QueuedConnection);
  return answer->wait();
}

// A job that deletes itself once it has ended.
template <typename Job>
Job* makeJob(const std::string& account) {
  auto* const job = new Job(QLatin1String(BackupPasswordStore::service));
  job->setKey(QString::fromStdString(account));
  return job;
}

void answerAtEnd(QKeychain::Job* job, const std::shared_ptr<Answer>& answer) {
  QObject::connect(job, &QKeychain::Job::finished, &keychain(), [answer] { answer->give(std::nullopt); });
}

// The job's own bytes are overwritten, because a copy of them is no other memory.
std::optional<SecretBytes> takePassword(const QKeychain::ReadPasswordJob& job) {
  if (job.error() != QKeychain::NoError) return std::nullopt;
  const QByteArray bytes = job.binaryData();
  std::optional<SecretBytes> password;
  if (Text::isValid({bytes.constData(), static_cast<std::size_t>(bytes.size())})) {
    password.emplace(bytes.cbegin(), bytes.cend());
  }
  tw_wipe(const_cast<char*>(bytes.constData()), static_cast<std::size_t>(bytes.size()));
  return password;
}

void startWriting(const SecretBytes& password, const std::string& account, const std::shared_ptr<Answer>& answer) {
  auto* const job = makeJob<QKeychain::WritePasswordJob>(account);
  answerAtEnd(job, answer);
  QString text =
      QString::fromUtf8(reinterpret_cast<const char*>(password.data()), static_cast<qsizetype>(password.size()));
  job->setTextData(text);
  tw_wipe(text.data(), static_cast<std::size_t>(text.size()) * sizeof(QChar));
  job->start();
}

}  // namespace

std::optional<SecretBytes> BackupPasswordStore::load(const std::string& account, const PasswordAnswer& late) {
  const auto startReading = [account](const std::shared_ptr<Answer>& answer) {
    auto* const job = makeJob<QKeychain::ReadPasswordJob>(account);
    QObject::connect(job, &QKeychain::Job::finished, &keychain(), [answer, job] { answer->give(takePassword(*job)); });
    job->start();
  };
  return answerOf(startReading, late);
}

void BackupPasswordStore::save(const SecretBytes& password, const std::string& account) {
  if (!Text::isValid(textOf(password))) return remove(account);
  // Both jobs are queued at once, so that no later call comes between them.
  answerOf([account, password](const std::shared_ptr<Answer>& answer) {
    makeJob<QKeychain::DeletePasswordJob>(account)->start();
    startWriting(password, account, answer);
  });
}

void BackupPasswordStore::remove(const std::string& account) {
  answerOf([account](const std::shared_ptr<Answer>& answer) {
    auto* const job = makeJob<QKeychain::DeletePasswordJob>(account);
    answerAtEnd(job, answer);
    job->start();
  });
}

// Asked for a password that nobody keeps, a store says that there is none, and asks nobody to unlock it.
bool BackupPasswordStore::isAvailable() {
  const auto isThere = std::make_shared<std::atomic<bool>>(true);
  answerOf([isThere](const std::shared_ptr<Answer>& answer) {
    auto* const job = makeJob<QKeychain::ReadPasswordJob>("");
    QObject::connect(job, &QKeychain::Job::finished, &keychain(), [answer, job, isThere] {
      constexpr std::array answersOfAStore{QKeychain::NoError, QKeychain::EntryNotFound, QKeychain::AccessDenied,
                                           QKeychain::AccessDeniedByUser};
      *isThere = std::ranges::find(answersOfAStore, job->error()) != answersOfAStore.end();
      answer->give(std::nullopt);
    });
    job->start();
  });
  return *isThere;
}
