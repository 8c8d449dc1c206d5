#pragma once

#include "Task.h"

#include <functional>

// Runs `work` on a thread of its own; the awaiting work goes on once it ended,
// with the exception `work` raised, if any, raised again. The calling thread's
// event loop runs meanwhile (no loop of its own). `work` must not touch widgets.
TTask<> RunOnThread(std::function<void()> work);
