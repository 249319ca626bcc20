// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDir>

#include <sys/types.h>

#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

namespace ferrow::test {

/// With `state`, those alone that are in it, as the system writes it: "T" for stopped.
inline std::vector<pid_t> childrenOf(pid_t parent, char state = 0)
{
    std::vector<pid_t> children;
    for (const QString& name : QDir(QStringLiteral("/proc")).entryList({QStringLiteral("[0-9]*")}, QDir::Dirs)) {
        std::string text;
        std::getline(std::ifstream("/proc/" + name.toStdString() + "/stat"), text);
        // After the name in brackets: state and parent.
        const std::size_t end = text.rfind(')');
        if (end != std::string::npos && std::atoi(text.c_str() + end + 3) == parent &&
            (state == 0 || text[end + 2] == state))
            children.push_back(name.toInt());
    }
    return children;
}

} // namespace ferrow::test
