#pragma once

#include <QObject>

namespace vrkview {

class ViewState;

/// Shows on the face that was selected last in which directions its U and V go, so that the user can tell how a pattern will
/// lie on it.
///
/// Thread: the application's, which is the render thread.
class FaceDirections : public QObject {
    Q_OBJECT

public:
    /// @param state  outlives this.
    explicit FaceDirections(const ViewState& state, QObject* parent = nullptr);

    bool areShown() const { return on; }
    void setShown(bool wanted);

private:
    void follow();

    const ViewState& state;
    bool on = false;
    bool isMarked = false; // a face is, in the view
};

} // namespace vrkview
