#include "edit/PlaceDialog.h"

#include "docks/PoseText.h"

#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QGridLayout>
#include <QLabel>

#include <algorithm>
#include <numbers>

namespace vrkview {
namespace {

constexpr double farthest = 1e7; // millimetres
constexpr double radians = std::numbers::pi / 180;
constexpr int decimals = 3;

} // namespace

PlaceDialog::PlaceDialog(const QString& name, const QString& base, const vrk::rob::Posed& pose, QWidget* parent)
    : QDialog(parent), given(pose)
{
    setWindowTitle(tr("Place of %1").arg(name));
    auto* grid = new QGridLayout(this);
    auto* head = new QLabel(base.isEmpty() ? tr("In the world") : tr("In %1").arg(base));
    head->setTextFormat(Qt::PlainText);
    grid->addWidget(head, 0, 0, 1, 4);
    const std::array<double, 3> angles = anglesOf(pose.rotation());
    const std::array<double, 6> numbers = {pose.position.x, pose.position.y, pose.position.z,
                                           angles[0],       angles[1],       angles[2]};
    const std::array<QString, 6> names = {"X", "Y", "Z", "Rx", "Ry", "Rz"};
    for (std::size_t i = 0; i < boxes.size(); ++i) {
        const bool isAngle = i >= 3;
        boxes[i] = new QDoubleSpinBox;
        boxes[i]->setLocale(QLocale::c());
        boxes[i]->setDecimals(decimals);
        boxes[i]->setRange(isAngle ? -360 : -farthest, isAngle ? 360 : farthest);
        boxes[i]->setSingleStep(isAngle ? 1 : 10);
        boxes[i]->setSuffix(isAngle ? QStringLiteral("°") : QStringLiteral(" mm"));
        boxes[i]->setAlignment(Qt::AlignRight);
        boxes[i]->setValue(numbers[i]);
        shown[i] = boxes[i]->value();
        const int row = 1 + static_cast<int>(i % 3);
        const int column = isAngle ? 2 : 0;
        grid->addWidget(new QLabel(names[i]), row, column);
        grid->addWidget(boxes[i], row, column + 1);
    }
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    grid->addWidget(buttons, 4, 0, 1, 4);
}

vrk::rob::Posed PlaceDialog::getPose() const
{
    const auto isChanged = [this](std::size_t i) { return boxes[i]->value() != shown[i]; };
    vrk::rob::Posed pose = given; // numbers that were not touched keep all their digits
    if (isChanged(0))
        pose.position.x = boxes[0]->value();
    if (isChanged(1))
        pose.position.y = boxes[1]->value();
    if (isChanged(2))
        pose.position.z = boxes[2]->value();
    if (isChanged(3) || isChanged(4) || isChanged(5)) {
        const vrk::rob::Rotationd rotation(boxes[3]->value() * radians, boxes[4]->value() * radians,
                                           boxes[5]->value() * radians);
        pose = vrk::rob::Posed(pose.position, rotation);
    }
    return pose;
}

} // namespace vrkview
