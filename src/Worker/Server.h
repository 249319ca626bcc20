// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Worker/Channel.h"

namespace ferrow::Worker {

/// Answers one request after the other on the calling thread, until the other side closes the connection or says what
/// nobody in their right mind would.
void serve(Channel& channel);

} // namespace ferrow::Worker
