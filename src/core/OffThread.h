#pragma once

#include <functional>

// Runs `work` on a thread of its own and waits for it in a local event loop, so
// that windows keep repainting while a slow server answers; the caller disables
// whatever must not be used meanwhile. An exception of `work` is raised again
// here. `work` must not touch widgets.
void RunOffThread(const std::function<void()> &work);
