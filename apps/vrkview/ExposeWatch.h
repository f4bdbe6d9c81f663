#pragma once

#include <QAbstractNativeEventFilter>

#include <functional>

namespace vrkview {

/// Tells when a part of a native window that Qt did not make has to be drawn again. Qt sees no such event of its own
/// where that window covers one of Qt's.
///
/// Thread: the application's. Works under X11 only, as the view does.
class ExposeWatch : public QAbstractNativeEventFilter {
public:
    ExposeWatch(unsigned long window, std::function<void()> exposed);
    ~ExposeWatch() override;
    bool nativeEventFilter(const QByteArray& eventType, void* message, qintptr* result) override;

private:
    unsigned long window;
    std::function<void()> exposed;
};

} // namespace vrkview
