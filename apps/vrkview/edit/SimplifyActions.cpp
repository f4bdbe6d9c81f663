#include "edit/SimplifyActions.h"

#include "canvas/ViewState.h"
#include "edit/Attempt.h"
#include "edit/History.h"
#include "edit/MenuAction.h"
#include "edit/ModelPlaces.h"
#include "files/FileStation.h"

#include <QAction>
#include <QDialog>
#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QFormLayout>
#include <QLabel>
#include <QMenu>

namespace vrkview {

SimplifyActions::SimplifyActions(QWidget& window, ViewState& state)
    : QObject(&window), window(window), state(state),
      simplify(menuAction(window, this, tr("S&implify meshes…"), {}, &SimplifyActions::askForTolerance))
{
    connect(&work, &MeshSimplifying::simplified, this, &SimplifyActions::take);
    connect(&work, &MeshSimplifying::failed, this, &SimplifyActions::failed);
    connect(&work, &MeshSimplifying::cancelled, this,
            [this] { emit told(tr("Simplifying given up; nothing was changed")); });
    connect(&work, &MeshSimplifying::finished, this, &SimplifyActions::followState);
    connect(&state, &ViewState::selectionChanged, this, &SimplifyActions::followState);
    connect(&state, &ViewState::stationChanged, this, &SimplifyActions::followState);
    followState();
}

void SimplifyActions::fillMenu(QMenu& menu) const
{
    menu.addAction(simplify);
}

void SimplifyActions::fillTreeMenu(QWidget& tree) const
{
    tree.addAction(simplify);
}

void SimplifyActions::askForTolerance()
{
    auto* dialog = new QDialog(&window);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setWindowTitle(tr("Simplify %1").arg(nameOfThings(state.getSelected())));
    auto* form = new QFormLayout(dialog);
    auto* tolerance = new QDoubleSpinBox;
    tolerance->setLocale(QLocale::c());
    tolerance->setDecimals(3);
    tolerance->setRange(0, 1000);
    tolerance->setSingleStep(0.1);
    tolerance->setSuffix(tr(" mm"));
    tolerance->setSpecialValueText(tr("a thousandth of its size"));
    tolerance->setMinimumWidth(tolerance->fontMetrics().horizontalAdvance(tolerance->specialValueText()) + 60);
    form->addRow(tr("Tolerance"), tolerance);
    auto* hint = new QLabel(tr("So far the coarser mesh may lie from the one of the file, at most."));
    hint->setWordWrap(true);
    form->addRow(hint);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    form->addRow(buttons);
    connect(buttons, &QDialogButtonBox::accepted, dialog, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, dialog, &QDialog::reject);
    connect(dialog, &QDialog::accepted, this, [this, tolerance] {
        simplifySelected(tolerance->value() > 0 ? std::optional(tolerance->value()) : std::nullopt);
    });
    dialog->open();
}

void SimplifyActions::simplifySelected(std::optional<double> tolerance)
{
    work.start(meshesIn(state.getSelected()), tolerance);
    followState();
}

void SimplifyActions::take(const MeshSimplifying::Result& result)
{
    attempt(
        [&] {
            state.getHistory().push(std::make_unique<SimplifyBodies>(result.meshes));
            QStringList lines;
            for (std::size_t i = 0; i < result.told.size(); ++i)
                lines << QString::fromStdString(
                    textOf({nameOfThing(result.meshes[i].body).toStdString(), result.told[i].before,
                            result.told[i].after, result.told[i].tolerance}));
            emit told(lines.join(QStringLiteral("; ")));
        },
        [this](const QString& text) { emit failed(text); });
}

void SimplifyActions::followState()
{
    simplify->setEnabled(!work.isRunning() && !meshesIn(state.getSelected()).empty());
}

} // namespace vrkview
