// SPDX-License-Identifier: GPL-3.0-or-later
// Run when Ferrow is built: writes what one shell reads to complete the command line of ferrow-batch.
#include "Command/Completions.h"

#include <QByteArray>
#include <QFile>

#include <cstdio>
#include <cstdlib>

int main(int argc, char** argv)
{
    using namespace ferrow::Command;
    const QByteArray shell = argc == 3 ? argv[1] : "";
    const QString text = shell == "bash"   ? bashCompletion()
                         : shell == "zsh"  ? zshCompletion()
                         : shell == "fish" ? fishCompletion()
                                           : QString();
    if (text.isEmpty()) {
        std::fputs("usage: ferrow-completions bash|zsh|fish FILE\n", stderr);
        return 2;
    }
    QFile file(QFile::decodeName(argv[2]));
    if (!file.open(QIODevice::WriteOnly) || file.write(text.toUtf8()) < 0 || !file.flush()) {
        std::fprintf(stderr, "%s: %s\n", argv[2], qPrintable(file.errorString()));
        return EXIT_FAILURE;
    }
    return EXIT_SUCCESS;
}
