// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>

namespace ferrow {

/// SIGTERM, SIGINT and SIGHUP, brought into the event loop; those that whoever started the program ignores stay so.
/// At most one lives at a time.
class EndingSignals : public QObject {
    Q_OBJECT

public:
    /// Without descriptors to be had the signals end the program as they always do.
    EndingSignals();
    EndingSignals(const EndingSignals&) = delete;
    EndingSignals& operator=(const EndingSignals&) = delete;
    /// From here on they are ignored: the program is ending.
    ~EndingSignals() override;

signals:
    void received();

private:
    int readEnd_ = -1;
};

} // namespace ferrow
