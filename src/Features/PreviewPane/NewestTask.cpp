// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/PreviewPane/NewestTask.h"

#include <new>
#include <utility>

namespace ferrow {

NewestTask::~NewestTask()
{
    stop_.request_stop();
}

void NewestTask::run(Work work)
{
    if (isRunning_) {
        waiting_ = std::move(work);
        return;
    }
    waiting_ = {};
    start(std::move(work));
}

void NewestTask::stop()
{
    stop_.request_stop();
    stop_ = {};
    ++generation_;
    waiting_ = {};
}

void NewestTask::start(Work work)
{
    isRunning_ = true;
    work_.post(
        [this, work = std::move(work), stop = stop_.get_token(), generation = generation_, sender = relay_.sender()] {
            Deliver deliver;
            try {
                deliver = work(stop);
            } catch (const std::bad_alloc&) {
                // What was shown before stays.
            }
            sender.post([this, generation, deliver] { finish(generation, deliver); });
        });
}

void NewestTask::finish(std::int64_t generation, const Deliver& deliver)
{
    isRunning_ = false;
    if (generation == generation_ && deliver)
        deliver();
    // Delivering may have asked for new work.
    if (!isRunning_ && waiting_)
        start(std::exchange(waiting_, {}));
}

} // namespace ferrow
