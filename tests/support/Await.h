#pragma once

#include "core/Task.h"

#include <QEventLoop>
#include <exception>
#include <optional>

// Runs the event loop until `task` ended, raising again what it raised. For
// tests only: the program itself never waits in a loop of its own.
inline void Await(TTask<> task)
{
  std::exception_ptr failure;
  bool ended = false;
  QEventLoop loop;
  Launch(std::move(task), [&](std::exception_ptr raised) {
    failure = raised;
    ended = true;
    loop.quit();
  });
  if (!ended)
    loop.exec();
  if (failure)
    std::rethrow_exception(failure);
}

// The same for a task that gives a value, which it gives.
template <class T> T Await(TTask<T> task)
{
  std::optional<T> value;
  auto keep = [](TTask<T> inner, std::optional<T> &out) -> TTask<> { out.emplace(co_await std::move(inner)); };
  Await(keep(std::move(task), value));
  return std::move(*value);
}
