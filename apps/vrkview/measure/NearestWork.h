#pragma once

#include "files/LongWork.h"

#include <boost/signals2/connection.hpp>

#include <QTimer>

namespace vrkview {

/// Tells how far the minimum distances are that are being measured. One that is given up has no value until something that it
/// measures moves.
class NearestWork : public LongWork {
    Q_OBJECT

public:
    explicit NearestWork(QObject* parent = nullptr);

    void cancel() override;

private:
    void look();

    QTimer timer; // while there is something to tell
    bool isTold = false;
    boost::signals2::scoped_connection following;
};

} // namespace vrkview
