// SPDX-License-Identifier: GPL-3.0-or-later
#include "Engine/Answerer.h"

#include "Engine/InProcessAnswerer.h"

#include <utility>

namespace ferrow::Engine {

namespace {

std::unique_ptr<Answerer>& current()
{
    static std::unique_ptr<Answerer> answerer = std::make_unique<InProcessAnswerer>();
    return answerer;
}

} // namespace

Answerer& answerer()
{
    return *current();
}

void setAnswerer(std::unique_ptr<Answerer> answerer)
{
    current() = std::move(answerer);
}

} // namespace ferrow::Engine
