#pragma once

#include <QWidget>

namespace vrkview {

class ViewState;

/// The scale by which scans that are coloured by height are to be read; not there while none is. Application thread.
class HeightScale : public QWidget {
    Q_OBJECT

public:
    /// @param state  outlives it.
    explicit HeightScale(const ViewState& state, QWidget* parent = nullptr);

    /// Follows what is shown.
    void refresh();
    QString lowText() const { return low; }
    QString highText() const { return high; }
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QString low;
    QString high;
};

} // namespace vrkview
