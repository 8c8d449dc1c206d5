#pragma once

#include <QCoreApplication>
#include <QMetaObject>

#include <coroutine>
#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <type_traits>
#include <utility>

// Work that waits for the event loop (an answer of the service, the end of a
// thread) without blocking it and without a loop of its own: a C++20 coroutine.
// A TTask starts when it is awaited (co_await) or launched (Launch); it resumes
// its awaiter when it ends, and an exception it raises is raised again there.
// Nothing here pumps events: the thread's one event loop resumes the work.
template <class T = void> class [[nodiscard]] TTask;

namespace TaskDetail {

struct TPromiseBase
{
  std::coroutine_handle<> Continuation;
  std::exception_ptr Failure;

  std::suspend_always initial_suspend() noexcept { return {}; }
  struct TFinal
  {
    bool await_ready() noexcept { return false; }
    template <class P> std::coroutine_handle<> await_suspend(std::coroutine_handle<P> ended) noexcept
    {
      const std::coroutine_handle<> next = ended.promise().Continuation;
      return next ? next : std::noop_coroutine();
    }
    void await_resume() noexcept {}
  };
  TFinal final_suspend() noexcept { return {}; }
  void unhandled_exception() noexcept { Failure = std::current_exception(); }
};

template <class T> struct TPromise : TPromiseBase
{
  std::optional<T> Value;
  TTask<T> get_return_object() noexcept;
  template <class U> void return_value(U &&value) { Value.emplace(std::forward<U>(value)); }
  T Result()
  {
    if (Failure)
      std::rethrow_exception(Failure);
    return std::move(*Value);
  }
};

template <> struct TPromise<void> : TPromiseBase
{
  TTask<void> get_return_object() noexcept;
  void return_void() noexcept {}
  void Result()
  {
    if (Failure)
      std::rethrow_exception(Failure);
  }
};

} // namespace TaskDetail

template <class T> class [[nodiscard]] TTask
{
public:
  using promise_type = TaskDetail::TPromise<T>;
  using THandle = std::coroutine_handle<promise_type>;

  explicit TTask(THandle handle) noexcept : FHandle(handle) {}
  TTask(TTask &&other) noexcept : FHandle(std::exchange(other.FHandle, {})) {}
  TTask &operator=(TTask &&other) noexcept
  {
    if (this != &other) {
      Destroy();
      FHandle = std::exchange(other.FHandle, {});
    }
    return *this;
  }
  TTask(const TTask &) = delete;
  TTask &operator=(const TTask &) = delete;
  // A task is only ever dropped before it started or after it ended: a running
  // one is owned by whoever awaits it until it ends.
  ~TTask() { Destroy(); }

  bool await_ready() const noexcept { return false; }
  std::coroutine_handle<> await_suspend(std::coroutine_handle<> awaiting) noexcept
  {
    FHandle.promise().Continuation = awaiting;
    return FHandle;
  }
  T await_resume() { return FHandle.promise().Result(); }

private:
  void Destroy() noexcept
  {
    if (FHandle)
      FHandle.destroy();
  }

  THandle FHandle;
};

namespace TaskDetail {

template <class T> TTask<T> TPromise<T>::get_return_object() noexcept
{
  return TTask<T>(std::coroutine_handle<TPromise<T>>::from_promise(*this));
}
inline TTask<void> TPromise<void>::get_return_object() noexcept
{
  return TTask<void>(std::coroutine_handle<TPromise<void>>::from_promise(*this));
}

// A coroutine nobody awaits: it starts at once and frees itself when it ends.
struct TDetached
{
  struct promise_type
  {
    TDetached get_return_object() noexcept { return {}; }
    std::suspend_never initial_suspend() noexcept { return {}; }
    std::suspend_never final_suspend() noexcept { return {}; }
    void return_void() noexcept {}
    void unhandled_exception() noexcept { std::terminate(); }
  };
};

} // namespace TaskDetail

// Starts `task` now (it runs until it first waits) and calls `ended` when it has
// ended, with the exception it raised (null when none).
inline TaskDetail::TDetached Launch(TTask<void> task, std::function<void(std::exception_ptr failure)> ended)
{
  std::exception_ptr failure;
  try {
    co_await std::move(task);
  } catch (...) {
    failure = std::current_exception();
  }
  if (ended)
    ended(failure);
}

// The same for a task that gives a value and raises nothing.
template <class T>
TaskDetail::TDetached Launch(TTask<T> task, std::type_identity_t<std::function<void(T value)>> ended)
{
  T value = co_await std::move(task);
  ended(std::move(value));
}

// Awaits the one call of the callback that `start` receives: co_await
// TCallback<T>([&](auto done) { something.Start(..., done); }). The awaiting
// work resumes from the event loop, never from inside the code that called the
// callback (a network reply's signal, say), so that it may start anything anew.
template <class T> class TCallback
{
public:
  using TDone = std::function<void(T value)>;
  explicit TCallback(std::function<void(TDone done)> start) : FStart(std::move(start)) {}

  bool await_ready() const noexcept { return false; }
  bool await_suspend(std::coroutine_handle<> awaiting)
  {
    const auto state = FState;
    FStart([state, awaiting](T value) {
      if (state->Value)
        return; // answered already: a second call must not resume the work twice
      state->Value.emplace(std::move(value));
      if (state->Suspended)
        QMetaObject::invokeMethod(QCoreApplication::instance(), [awaiting] { awaiting.resume(); },
                                  Qt::QueuedConnection);
    });
    if (FState->Value)
      return false; // answered at once: no need to wait
    FState->Suspended = true;
    return true;
  }
  T await_resume() { return std::move(*FState->Value); }

private:
  struct TState
  {
    std::optional<T> Value;
    bool Suspended = false;
  };
  std::function<void(TDone done)> FStart;
  std::shared_ptr<TState> FState = std::make_shared<TState>();
};
