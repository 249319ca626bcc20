// SPDX-License-Identifier: GPL-3.0-or-later
#include "Session/NewestTask.h"

#include "Platform/Base/Cancellation.h"

#include <utility>

namespace ferrow {

NewestTask::NewestTask(std::function<void()> idle, std::chrono::milliseconds patience)
    : idle_(std::move(idle)), work_(1, patience)
{
}

NewestTask::~NewestTask()
{
    stop_.request_stop();
}

void NewestTask::run(Work work, Failed failed)
{
    waiting_ = {std::move(work), std::move(failed)};
    if (!isRunning_)
        start(std::exchange(waiting_, {}));
}

void NewestTask::replace(Work work, Failed failed)
{
    stop();
    run(std::move(work), std::move(failed));
}

void NewestTask::stop()
{
    stop_.request_stop();
    stop_ = {};
    ++generation_;
    waiting_ = {};
}

void NewestTask::start(Task task)
{
    isRunning_ = true;
    const auto failure = [failed = std::move(task.failed)]() -> Deliver {
        return failed ? Deliver([failed, error = std::current_exception()] { failed(error); }) : Deliver();
    };
    const auto end = [this, generation = generation_, sender = relay_.sender()](const Deliver& deliver) {
        sender.post([this, generation, deliver] { finish(generation, deliver); });
    };
    try {
        work_.post([work = std::move(task.work), stop = stop_.get_token(), failure, end] {
            Deliver deliver;
            try {
                deliver = work(stop);
            } catch (const Canceled&) {
            } catch (...) {
                deliver = failure();
            }
            end(deliver);
        });
    } catch (...) {
        end(failure());
    }
}

void NewestTask::finish(std::int64_t generation, const Deliver& deliver)
{
    isRunning_ = false;
    if (generation == generation_ && deliver)
        deliver();
    // Delivering may have asked for new work.
    if (isRunning_)
        return;
    if (waiting_.work)
        start(std::exchange(waiting_, {}));
    else if (idle_)
        idle_();
}

} // namespace ferrow
