// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Engine/InProcessAnswerer.h"
#include "Worker/Channel.h"
#include "Worker/Confinement.h"

#include <functional>

namespace ferrow::Worker {

/// Forks a process behind the walls for each that is asked for, until the other side closes the connection. In these,
/// calls `serveOne` with the new one's own connection, on which it has introduced itself, and never returns.
void forkOnRequest(Channel& channel, Confinement& walls, const std::function<void(Channel&)>& serveOne);

/// Answers one request after the other on the calling thread, until the other side closes the connection or sends
/// what is no valid request. Returns after a FrameRequest too: a process that had an output's descriptor reads no other
/// photo. Without `logos`, logos are refused.
void serve(Channel& channel, Engine::InProcessAnswerer::LogoRasterizer logos = nullptr);

} // namespace ferrow::Worker
