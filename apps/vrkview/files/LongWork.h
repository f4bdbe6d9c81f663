#pragma once

#include <QObject>
#include <QString>

namespace vrkview {

/// Work that takes longer than a moment, goes on beside the window and can be given up.
///
/// Thread: the application's; the signals come there.
class LongWork : public QObject {
    Q_OBJECT

public:
    using QObject::QObject;

    /// Ends it soon; `finished` comes all the same.
    virtual void cancel() = 0;

signals:
    /// @param text  what is done.
    void started(const QString& text);
    /// @param fraction  0 to 1.
    void progressed(const QString& text, double fraction);
    void finished();
};

} // namespace vrkview
