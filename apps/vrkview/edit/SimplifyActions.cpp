#include "edit/SimplifyActions.h"

#include "canvas/ViewState.h"
#include "edit/Attempt.h"
#include "edit/History.h"
#include "edit/MenuAction.h"
#include "edit/ModelPlaces.h"
#include "files/FileStation.h"

#include "platform/station/SmoothMeshes.h"

#include <QAction>
#include <QDialog>
#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QFormLayout>
#include <QLabel>
#include <QMenu>

#include <numbers>

namespace vrkview {
namespace {

constexpr double usualDegrees = 35;

QString titleOf(bool isSmooth)
{
    return isSmooth ? QObject::tr("Smoothing") : QObject::tr("Simplifying");
}

/// Asks for one number. It is deleted when it is closed.
/// @param title  with %1 in place of the names of what is selected.
QDialog* makeDialog(QWidget& window, const QString& title, const ViewState& state, const QString& label,
                    QDoubleSpinBox* number, const QString& hintText)
{
    auto* dialog = new QDialog(&window);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setWindowTitle(title.arg(nameOfThings(state.getSelected())));
    auto* form = new QFormLayout(dialog);
    number->setLocale(QLocale::c());
    number->setMinimumWidth(number->fontMetrics().horizontalAdvance(number->specialValueText()) + 60);
    form->addRow(label, number);
    auto* hint = new QLabel(hintText);
    hint->setWordWrap(true);
    form->addRow(hint);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    form->addRow(buttons);
    QObject::connect(buttons, &QDialogButtonBox::accepted, dialog, &QDialog::accept);
    QObject::connect(buttons, &QDialogButtonBox::rejected, dialog, &QDialog::reject);
    return dialog;
}

} // namespace

SimplifyActions::SimplifyActions(QWidget& window, ViewState& state)
    : QObject(&window), window(window), state(state),
      simplify(menuAction(window, this, tr("S&implify meshes…"), {}, &SimplifyActions::askForTolerance)),
      smooth(menuAction(window, this, tr("Smoot&h meshes…"), {}, &SimplifyActions::askForAngle))
{
    connect(&work, &MeshSimplifying::made, this, &SimplifyActions::take);
    connect(&work, &MeshSimplifying::failed, this, &SimplifyActions::failed);
    connect(&work, &MeshSimplifying::cancelled, this,
            [this] { emit told(tr("%1 given up; nothing was changed").arg(titleOf(kind == Kind::Smooth))); });
    connect(&work, &MeshSimplifying::finished, this, &SimplifyActions::followState);
    connect(&state, &ViewState::selectionChanged, this, &SimplifyActions::followState);
    connect(&state, &ViewState::stationChanged, this, &SimplifyActions::followState);
    followState();
}

void SimplifyActions::fillMenu(QMenu& menu) const
{
    menu.addAction(simplify);
    menu.addAction(smooth);
}

void SimplifyActions::fillTreeMenu(QWidget& tree) const
{
    tree.addAction(simplify);
    tree.addAction(smooth);
}

void SimplifyActions::askForTolerance()
{
    auto* tolerance = new QDoubleSpinBox;
    tolerance->setDecimals(3);
    tolerance->setRange(0, 1000);
    tolerance->setSingleStep(0.1);
    tolerance->setSuffix(tr(" mm"));
    tolerance->setSpecialValueText(tr("a thousandth of its size"));
    QDialog* dialog = makeDialog(window, tr("Simplify %1"), state, tr("Tolerance"), tolerance,
                                 tr("So far the coarser mesh may lie from the one of the file, at most."));
    connect(dialog, &QDialog::accepted, this, [this, tolerance] {
        simplifySelected(tolerance->value() > 0 ? std::optional(tolerance->value()) : std::nullopt);
    });
    dialog->open();
}

void SimplifyActions::askForAngle()
{
    auto* angle = new QDoubleSpinBox;
    angle->setDecimals(0);
    angle->setRange(0, 180);
    angle->setValue(usualDegrees);
    angle->setSuffix(tr("°"));
    angle->setSpecialValueText(tr("each facet by itself"));
    QDialog* dialog = makeDialog(window, tr("Smooth %1"), state, tr("Up to"), angle,
                                 tr("Edges that are bent by more stay sharp. The triangles stay as they are."));
    connect(dialog, &QDialog::accepted, this, [this, angle] { smoothSelected(angle->value()); });
    dialog->open();
}

void SimplifyActions::simplifySelected(std::optional<double> tolerance)
{
    if (work.isRunning())
        return;
    kind = Kind::Coarser;
    work.start(stlMeshesIn(state.getSelected()), titleOf(false),
               [tolerance](const std::filesystem::path& file, const vrk::station::Progress& report) {
                   return vrk::station::SimplifyMeshFile(file, tolerance, report);
               });
    followState();
}

void SimplifyActions::smoothSelected(double degrees)
{
    if (work.isRunning())
        return;
    kind = Kind::Smooth;
    work.start(meshesIn(state.getSelected()), titleOf(true),
               [angle = degrees * std::numbers::pi / 180](const std::filesystem::path& file,
                                                          const vrk::station::Progress& report) {
                   return vrk::station::CoarserMesh{vrk::station::SmoothMeshFile(file, angle, report)};
               });
    followState();
}

void SimplifyActions::take(const MeshSimplifying::Result& result)
{
    attempt(
        [&] {
            const bool isSmooth = kind == Kind::Smooth;
            state.getHistory().push(
                std::make_unique<SimplifyBodies>(result.meshes, isSmooth ? tr("Smooth %1") : tr("Simplify %1")));
            if (!isSmooth)
                emit told(tellOfCoarser(result));
        },
        [this](const QString& text) { emit failed(text); });
}

QString SimplifyActions::tellOfCoarser(const MeshSimplifying::Result& result) const
{
    QStringList lines;
    for (std::size_t i = 0; i < result.told.size(); ++i)
        lines << QString::fromStdString(textOf({nameOfThing(result.meshes[i].body).toStdString(), result.told[i].before,
                                                result.told[i].after, result.told[i].tolerance}));
    return lines.join(QStringLiteral("; "));
}

void SimplifyActions::followState()
{
    smooth->setEnabled(!work.isRunning() && !meshesIn(state.getSelected()).empty());
    simplify->setEnabled(!work.isRunning() && !stlMeshesIn(state.getSelected()).empty());
}

} // namespace vrkview
