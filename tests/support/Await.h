#pragma once

#include "core/Task.h"

#include <QEventLoop>
#include <exception>
#include <optional>

// Runs the event loop until `task` ended and gives its value, or raises what it
// raised. For tests only: the program itself never waits in a loop of its own.
template <class T> T Await(TTask<T> task)
{
  std::optional<T> value;
  auto keep = [](TTask<T> inner, std::optional<T> &out) -> TTask<> { out.emplace(co_await std::move(inner)); };
  std::exception_ptr failure;
  bool ended = false;
  QEventLoop loop;
  Launch(keep(std::move(task), value), [&](std::exception_ptr raised) {
    failure = raised;
    ended = true;
    loop.quit();
  });
  if (!ended)
    loop.exec();
  if (failure)
    std::rethrow_exception(failure);
  return std::move(*value);
}

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
