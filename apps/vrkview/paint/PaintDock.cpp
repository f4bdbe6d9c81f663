#include "paint/PaintDock.h"

#include "edit/ModelPlaces.h"
#include "paint/BodyCoats.h"
#include "paint/SprayRun.h"
#include "paint/ThicknessLegend.h"

#include <QDoubleSpinBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QScrollArea>
#include <QStyle>
#include <QToolButton>
#include <QVBoxLayout>

#include <cmath>
#include <numbers>

namespace vrkview {
namespace {

constexpr double degrees = 180 / std::numbers::pi;
constexpr double micrometres = 1000;
constexpr double percent = 100;
constexpr int whole = 1000;        // of the progress
constexpr int countInterval = 150; // milliseconds

} // namespace

PaintDock::PaintDock(BodyCoats& coats, SprayRun& run, QWidget* parent)
    : QDockWidget(tr("Paint"), parent), coats(coats), run(run)
{
    setObjectName("paint");
    auto* content = new QWidget;
    auto* column = new QVBoxLayout(content);
    column->setContentsMargins(8, 8, 8, 8);
    column->addWidget(makeRun());
    column->addWidget(makeGun());
    column->addWidget(makeTarget());
    column->addStretch(1);
    auto* scroll = new QScrollArea;
    scroll->setWidgetResizable(true);
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    scroll->setWidget(content);
    scroll->setMinimumWidth(content->minimumSizeHint().width() + style()->pixelMetric(QStyle::PM_ScrollBarExtent));
    setWidget(scroll);

    counting.setSingleShot(true);
    counting.setInterval(countInterval);
    connect(&counting, &QTimer::timeout, this, &PaintDock::followCoats);
    connect(&coats, &BodyCoats::changed, this, [this] {
        if (!counting.isActive())
            counting.start();
    });
    connect(&run, &SprayRun::changed, this, &PaintDock::followRun);
    takeSettings();
    takeTarget();
    followRun();
    followCoats();
}

QToolButton* PaintDock::button(const QString& name) const
{
    return findChild<QToolButton*>(name);
}

QDoubleSpinBox* PaintDock::add(QFormLayout& form, const QString& text, const char* name, double least, double most,
                               double value, const QString& unit, const QString& tip)
{
    auto* box = new QDoubleSpinBox;
    box->setObjectName(name);
    box->setLocale(QLocale::c());
    box->setDecimals(1);
    box->setRange(least, most);
    box->setValue(value);
    box->setSuffix(unit);
    box->setAlignment(Qt::AlignRight);
    box->setKeyboardTracking(false);
    box->setToolTip(tip);
    form.addRow(text, box);
    return box;
}

QWidget* PaintDock::makeRun()
{
    auto* group = new QGroupBox(tr("Spray"));
    auto* column = new QVBoxLayout(group);
    what = new QLabel;
    what->setTextFormat(Qt::PlainText); // names come from files
    what->setWordWrap(true);
    column->addWidget(what);
    auto* row = new QHBoxLayout;
    start = addButton("start", tr("Back to the start of the way"), style()->standardIcon(QStyle::SP_MediaSkipBackward));
    play = addButton("play", {}, {});
    step = addButton("step", tr("Spray along one stroke"), style()->standardIcon(QStyle::SP_MediaSeekForward));
    end =
        addButton("end", tr("Spray to the end of the way at once"), style()->standardIcon(QStyle::SP_MediaSkipForward));
    for (QToolButton* each : {start, play, step, end})
        row->addWidget(each);
    row->addStretch(1);
    place = new QLabel;
    row->addWidget(place);
    column->addLayout(row);
    progress = new QProgressBar;
    progress->setRange(0, whole);
    progress->setTextVisible(false);
    progress->setFixedHeight(6);
    column->addWidget(progress);
    auto* form = new QFormLayout;
    stroke = add(*form, tr("Stroke"), "stroke", 0.1, 1e5, 20, tr(" mm"), tr("How far a step leads the gun"));
    column->addLayout(form);
    connect(start, &QToolButton::clicked, this, [this] {
        run.pause();
        run.setPlace(0);
    });
    connect(play, &QToolButton::clicked, this, [this] { run.isPlaying() ? run.pause() : run.play(); });
    connect(step, &QToolButton::clicked, this, [this] { run.step(stroke->value()); });
    connect(end, &QToolButton::clicked, this, [this] { run.stepToEnd(); });
    return group;
}

QToolButton* PaintDock::addButton(const char* name, const QString& text, const QIcon& icon)
{
    auto* button = new QToolButton;
    button->setObjectName(name);
    button->setToolTip(text);
    button->setAccessibleName(text);
    button->setIcon(icon);
    button->setAutoRaise(true);
    return button;
}

QWidget* PaintDock::makeGun()
{
    const SpraySettings usual;
    auto* group = new QGroupBox(tr("Gun"));
    auto* form = new QFormLayout(group);
    angle = add(*form, tr("Angle"), "angle", 1, 160, std::round(2 * usual.gun.halfAngle * degrees), tr("°"),
                tr("Of the whole cone"));
    flow = add(*form, tr("Flow"), "flow", 0, 1e6, usual.gun.flow, tr(" mm³/s"),
               tr("Of paint that stays on the body, once dry"));
    profile = add(*form, tr("Profile"), "profile", 1, 20, usual.gun.profile, {},
                  tr("1 paints an even spot, 2 one that thins out to its edge, more a narrower bell"));
    distance = add(*form, tr("Distance"), "distance", 1, 1e5, usual.distance, tr(" mm"),
                   tr("From the nozzle to the way; paint comes down to twice as far"));
    speed = add(*form, tr("Speed"), "speed", 0.1, 1e5, usual.speed, tr(" mm/s"), tr("Of the gun along its way"));
    for (QDoubleSpinBox* each : {angle, flow, profile, distance, speed})
        connect(each, &QDoubleSpinBox::valueChanged, this, &PaintDock::takeSettings);
    return group;
}

QWidget* PaintDock::makeTarget()
{
    const vrk::process::ThicknessTarget usual;
    auto* group = new QGroupBox(tr("Thickness"));
    auto* column = new QVBoxLayout(group);
    auto* form = new QFormLayout;
    target = add(*form, tr("Target"), "target", 0.1, 1e5, usual.thickness * micrometres, tr(" µm"),
                 tr("How thick the paint should be"));
    tolerance = add(*form, tr("Tolerance"), "tolerance", 1, 99, usual.tolerance * percent, tr(" %"),
                    tr("Of the target, to both sides"));
    column->addLayout(form);
    for (QDoubleSpinBox* each : {target, tolerance})
        connect(each, &QDoubleSpinBox::valueChanged, this, &PaintDock::takeTarget);
    legend = new ThicknessLegend;
    column->addWidget(legend);
    shares = new QLabel;
    shares->setWordWrap(true);
    column->addWidget(shares);
    maps = new QWidget;
    auto* row = new QHBoxLayout(maps);
    row->setContentsMargins(0, 0, 0, 0);
    const auto addPush = [&](const QString& text, const char* name, void (PaintDock::*asked)()) {
        auto* button = new QPushButton(text);
        button->setObjectName(name);
        row->addWidget(button);
        connect(button, &QPushButton::clicked, this, asked);
    };
    addPush(tr("Clear"), "clear", &PaintDock::clearRequested);
    addPush(tr("Open map…"), "open", &PaintDock::openRequested);
    addPush(tr("Save map…"), "save", &PaintDock::saveRequested);
    column->addWidget(maps);
    return group;
}

void PaintDock::takeSettings()
{
    SpraySettings settings = run.getSettings();
    settings.gun.halfAngle = angle->value() / 2 / degrees;
    settings.gun.flow = flow->value();
    settings.gun.profile = profile->value();
    settings.distance = distance->value();
    settings.speed = speed->value();
    run.setSettings(settings);
}

void PaintDock::takeTarget()
{
    const vrk::process::ThicknessTarget wanted{target->value() / micrometres, tolerance->value() / percent};
    legend->setTarget(wanted);
    coats.setTarget(wanted);
}

void PaintDock::followRun()
{
    const bool isAny = run.getPath() != 0;
    what->setText(isAny
                      ? tr("%1 paints %2").arg(nameOfThing(run.getPath()), nameOfThings(run.getBodies()))
                      : tr("Select a path or a band and what it is to paint, then choose Edit, Paint, Spray along the "
                           "selected way."));
    place->setText(isAny ? tr("%1 of %2 mm").arg(run.getPlace(), 0, 'f', 0).arg(run.length(), 0, 'f', 0) : QString());
    progress->setValue(run.length() > 0 ? static_cast<int>(std::lround(run.getPlace() / run.length() * whole)) : 0);
    const QString verb = run.isPlaying() ? tr("Pause") : tr("Spray at the speed of the gun");
    play->setIcon(style()->standardIcon(run.isPlaying() ? QStyle::SP_MediaPause : QStyle::SP_MediaPlay));
    play->setToolTip(verb);
    play->setAccessibleName(verb);
    for (QToolButton* each : {start, play})
        each->setEnabled(isAny);
    for (QToolButton* each : {step, end})
        each->setEnabled(isAny && run.getPlace() < run.length());
}

void PaintDock::followCoats()
{
    const BodyCoats::Shares found = coats.getShares();
    shares->setText(found.painted == 0 ? tr("Nothing is painted yet.")
                                       : tr("Of what is painted %1 % is on target, %2 % below, %3 % above.")
                                             .arg(found.on * percent, 0, 'f', 0)
                                             .arg(found.below * percent, 0, 'f', 0)
                                             .arg(found.above * percent, 0, 'f', 0));
    maps->setEnabled(!coats.getBodies().empty());
}

} // namespace vrkview
