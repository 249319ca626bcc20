// SPDX-License-Identifier: GPL-3.0-or-later
#include "Engine/Answerer.h"

#include <stdexcept>
#include <utility>

namespace ferrow::Engine {

namespace {

std::unique_ptr<Answerer>& current()
{
    static std::unique_ptr<Answerer> answerer;
    return answerer;
}

} // namespace

Answerer& answerer()
{
    if (!current())
        throw std::logic_error("nobody was chosen to answer requests");
    return *current();
}

void setAnswerer(std::unique_ptr<Answerer> answerer)
{
    current() = std::move(answerer);
}

} // namespace ferrow::Engine
