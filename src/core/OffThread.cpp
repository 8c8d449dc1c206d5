#include "OffThread.h"

#include <QThread>
#include <exception>

TTask<> RunOnThread(std::function<void()> work)
{
  const std::exception_ptr failure = co_await TCallback<std::exception_ptr>([&work](auto done) {
    auto failed = std::make_shared<std::exception_ptr>();
    QThread *const thread = QThread::create([work = std::move(work), failed] {
      try {
        work();
      } catch (...) {
        *failed = std::current_exception();
      }
    });
    QObject::connect(thread, &QThread::finished, QCoreApplication::instance(), [thread, failed, done] {
      thread->deleteLater();
      done(*failed);
    });
    thread->start();
  });
  if (failure)
    std::rethrow_exception(failure);
}
