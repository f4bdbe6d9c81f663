#include "docks/JointDock.h"

#include "canvas/ViewState.h"
#include "docks/JointRow.h"
#include "docks/LimitBox.h"
#include "edit/History.h"
#include "edit/MoveJoints.h"
#include "window/Glyphs.h"

#include "platform/layout/Layout.h"
#include "platform/layout/Mechanism.h"
#include "platform/sdf/SdfManager.h"

#include <QDoubleSpinBox>
#include <QGridLayout>
#include <QLabel>
#include <QScrollArea>
#include <QSlider>
#include <QToolButton>
#include <QVBoxLayout>

#include <algorithm>
#include <numbers>
#include <shared_mutex>

namespace vrkview {
namespace {

using vrk::layout::Joint;
using vrk::layout::JointType;
using vrk::layout::Layout;
using vrk::layout::Mechanism;

constexpr double degrees = 180 / std::numbers::pi;
constexpr double fullTurn = 360; // either way, of joints without limits

double unitOf(const Joint& joint)
{
    return joint.type == JointType::Prismatic ? 1 : degrees;
}

JointRange rangeOf(const Joint& joint)
{
    if (joint.type == JointType::Continuous)
        return {-fullTurn, fullTurn, QStringLiteral("°")};
    const double unit = unitOf(joint);
    return {joint.lower * unit, joint.upper * unit,
            joint.type == JointType::Prismatic ? QStringLiteral(" mm") : QStringLiteral("°")};
}

std::vector<Joint> movingJoints(const Mechanism& mechanism)
{
    const std::shared_lock lock(sdf::SdfManager::inst().mutex());
    std::vector<Joint> joints;
    std::ranges::copy_if(mechanism.getJoints(), std::back_inserter(joints), &Joint::isDriven);
    return joints;
}

vrk::VisualType kindOf(const Mechanism& mechanism)
{
    switch (mechanism.getModelType()) {
    case sdf::ModelType::Manipulator:
        return vrk::VisualType::Manipulator;
    case sdf::ModelType::Tool:
        return vrk::VisualType::Tool;
    default:
        return vrk::VisualType::Device;
    }
}

} // namespace

std::vector<std::shared_ptr<Mechanism>> allMechanisms()
{
    const Layout& layout = Layout::inst();
    std::vector<std::shared_ptr<Mechanism>> all;
    const std::shared_lock lock(sdf::SdfManager::inst().mutex());
    all.insert(all.end(), layout.manipulators.begin(), layout.manipulators.end());
    all.insert(all.end(), layout.devices.begin(), layout.devices.end());
    all.insert(all.end(), layout.tools.begin(), layout.tools.end());
    return all;
}

JointDock::JointDock(ViewState& state, QWidget* parent) : QDockWidget(tr("Joints"), parent), state(state)
{
    setObjectName("joints");
    build();
    connect(&state, &ViewState::stationChanged, this, &JointDock::build);
    linksMoved = Mechanism::OnLinksMoved([this](const auto&) {
        if (!isOutdated.exchange(true))
            QMetaObject::invokeMethod(this, &JointDock::showValues, Qt::QueuedConnection);
    });
}

JointDock::~JointDock() = default;

std::vector<JointRow*> JointDock::getRows() const
{
    std::vector<JointRow*> rows;
    for (const auto& group : groups)
        rows.insert(rows.end(), group->rows.begin(), group->rows.end());
    return rows;
}

void JointDock::build()
{
    groups.clear();
    moved = nullptr;
    auto* content = new QWidget;
    auto* column = new QVBoxLayout(content);
    column->setContentsMargins(8, 8, 8, 8);
    column->setSpacing(10);
    for (const auto& mechanism : allMechanisms())
        if (mechanism->jointValueCount() > 0)
            addGroup(mechanism, *column);
    if (groups.empty()) {
        auto* nothing = new QLabel(tr("Nothing in this station has joints that move."));
        nothing->setWordWrap(true);
        nothing->setEnabled(false);
        column->addWidget(nothing);
    }
    column->addStretch();
    auto* area = new QScrollArea;
    area->setFrameShape(QFrame::NoFrame);
    area->setWidgetResizable(true);
    area->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    area->setWidget(content);
    if (QWidget* before = widget())
        before->deleteLater();
    setWidget(area);
    showValues();
}

void JointDock::addGroup(const std::shared_ptr<Mechanism>& mechanism, QVBoxLayout& column)
{
    groups.push_back(std::make_unique<Group>(Group{mechanism, {}}));
    Group& group = *groups.back();

    auto* head = new QHBoxLayout;
    head->setSpacing(6);
    auto* icon = new QLabel;
    icon->setPixmap(kindIcon(kindOf(*mechanism)).pixmap(QSize(16, 16), devicePixelRatioF()));
    auto* name = new QLabel(QString::fromStdString(mechanism->getName()));
    name->setTextFormat(Qt::PlainText);
    QFont bold = name->font();
    bold.setBold(true);
    name->setFont(bold);
    auto* home = new QToolButton;
    home->setAutoRaise(true);
    home->setIcon(glyph(Glyph::Reset));
    home->setToolTip(tr("All joints to zero, or to the limit next to it"));
    head->addWidget(icon);
    head->addWidget(name, 1);
    head->addWidget(home);
    column.addLayout(head);

    auto* grid = new QGridLayout;
    grid->setContentsMargins(22, 0, 0, 0); // under the name
    grid->setHorizontalSpacing(8);
    grid->setVerticalSpacing(4);
    grid->setColumnStretch(1, 1);
    column.addLayout(grid);
    for (const Joint& joint : movingJoints(*mechanism)) {
        auto* row = new JointRow(QString::fromStdString(joint.name), rangeOf(joint), *grid, grid);
        connect(row, &JointRow::limited, this, &JointDock::limited);
        connect(row, &JointRow::valueChanged, this, [this, &group, row] { moveJoints(group, *row); });
        const auto begin = [this] { ++gesture; };
        connect(&row->getSlider(), &QSlider::sliderPressed, this, begin);
        connect(&row->getSlider(), &QSlider::sliderReleased, this, begin);
        connect(&row->getBox(), &QDoubleSpinBox::editingFinished, this, begin);
        group.rows.push_back(row);
    }
    connect(home, &QToolButton::clicked, this, [this, &group] {
        push(group, std::vector<double>(group.rows.size(), 0.0), 0); // which holds to the limits
    });
}

void JointDock::moveJoints(const Group& group, const JointRow& row)
{
    if (std::exchange(moved, &row) != &row)
        ++gesture;
    const std::vector<Joint> joints = movingJoints(*group.mechanism);
    std::vector<double> values;
    for (std::size_t i = 0; i < joints.size(); ++i) {
        // A joint that was not touched keeps its value to the last digit.
        const double shown = group.rows[i]->getValue();
        const double present = joints[i].value * unitOf(joints[i]);
        const bool isTouched = std::abs(shown - present) > 0.5 * std::pow(10.0, -2);
        values.push_back(isTouched ? shown / unitOf(joints[i]) : joints[i].value);
    }
    push(group, std::move(values), gesture);
}

void JointDock::push(const Group& group, std::vector<double> values, int ofGesture)
{
    state.getHistory().push(std::make_unique<MoveJoints>(group.mechanism, std::move(values), ofGesture));
    emit jointsMoved(ofGesture);
}

void JointDock::showValues()
{
    isOutdated = false;
    for (const auto& group : groups) {
        const std::vector<Joint> joints = movingJoints(*group->mechanism);
        for (std::size_t i = 0; i < joints.size(); ++i)
            group->rows[i]->setValue(joints[i].value * unitOf(joints[i]));
    }
}

} // namespace vrkview
