#include "OffThread.h"

#include <QEventLoop>
#include <QThread>
#include <exception>
#include <memory>

void RunOffThread(const std::function<void()> &work)
{
  std::exception_ptr failure;
  const std::unique_ptr<QThread> thread(QThread::create([&work, &failure] {
    try {
      work();
    } catch (...) {
      failure = std::current_exception();
    }
  }));
  QEventLoop loop;
  // Queued to this thread: a quit sent before exec() still ends it.
  QObject::connect(thread.get(), &QThread::finished, &loop, &QEventLoop::quit, Qt::QueuedConnection);
  thread->start();
  loop.exec();
  thread->wait();
  if (failure)
    std::rethrow_exception(failure);
}
