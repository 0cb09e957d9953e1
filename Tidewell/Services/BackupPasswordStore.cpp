#include "Tidewell/Services/BackupPasswordStore.h"

#include <qt6keychain/keychain.h>

#include <QThread>
#include <chrono>
#include <future>
#include <memory>
#include <utility>

#include "TidewellCore/Platform/Bytes.h"
#include "TidewellCore/Platform/Text.h"

namespace {

using Answer = std::promise<std::optional<SecretBytes>>;

constexpr std::chrono::seconds patience(5);

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
std::optional<SecretBytes> answerOf(StartJobs startJobs) {
  const auto answer = std::make_shared<Answer>();
  std::future<std::optional<SecretBytes>> future = answer->get_future();
  QMetaObject::invokeMethod(
      &keychain(), [answer, startJobs = std::move(startJobs)] { startJobs(answer); }, Qt::QueuedConnection);
  if (future.wait_for(patience) != std::future_status::ready) return std::nullopt;
  return future.get();
}

// A job that deletes itself once it has ended.
template <typename Job>
Job* makeJob(const std::string& account) {
  auto* const job = new Job(QLatin1String(BackupPasswordStore::service));
  job->setKey(QString::fromStdString(account));
  return job;
}

void answerAtEnd(QKeychain::Job* job, const std::shared_ptr<Answer>& answer) {
  QObject::connect(job, &QKeychain::Job::finished, &keychain(), [answer] { answer->set_value(std::nullopt); });
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

std::optional<SecretBytes> BackupPasswordStore::load(const std::string& account) {
  return answerOf([account](const std::shared_ptr<Answer>& answer) {
    auto* const job = makeJob<QKeychain::ReadPasswordJob>(account);
    QObject::connect(job, &QKeychain::Job::finished, &keychain(),
                     [answer, job] { answer->set_value(takePassword(*job)); });
    job->start();
  });
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
