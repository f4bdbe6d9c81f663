#include "canvas/CandidateList.h"

#include "window/Glyphs.h"

#include "scene/Scene.h"
#include "visual/Visual.h"

#include <QMouseEvent>
#include <QScreen>

#include <algorithm>
#include <utility>

namespace vrkview {
namespace {

using vrk::selection::PickVerdict;
using vrk::visual::Scene;

constexpr int gap = 4;      // logical pixels between the mouse and the list
constexpr int mostRows = 9; // beyond these it scrolls

QString labelOf(const Picked& picked)
{
    QString text = picked.text;
    if (picked.candidate.verdict == PickVerdict::Behind)
        text += QStringLiteral("   (%1)").arg(QString::fromStdString(picked.candidate.reason));
    return text;
}

QIcon iconOf(const Picked& picked)
{
    const unsigned id = Scene::HasVisual(picked.thing) ? picked.thing : picked.candidate.visualId;
    return kindIcon(Scene::GetVisual(id)->getType());
}

} // namespace

CandidateList::CandidateList(QWidget* parent) : QListWidget(parent)
{
    setWindowFlags(Qt::ToolTip | Qt::FramelessWindowHint); // above the view, and no window that is activated
    setAttribute(Qt::WA_ShowWithoutActivating);
    setFocusPolicy(Qt::NoFocus);
    setMouseTracking(true); // the row under the mouse is current
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setSizeAdjustPolicy(AdjustToContents);
    setSelectionMode(SingleSelection);
    setUniformItemSizes(true);
    hide();
    connect(this, &QListWidget::currentRowChanged, this, [this](int row) {
        if (row >= 0 && isOpen())
            emit currentChanged();
    });
    connect(this, &QListWidget::itemClicked, this, [this] { emit rowClicked(); });
}

void CandidateList::open(std::vector<Picked> found, const QPoint& place)
{
    dismiss();
    if (found.empty())
        return;
    for (const Picked& picked : found) {
        addItem(new QListWidgetItem(iconOf(picked), labelOf(picked)));
        watch.add(picked.candidate.visual);
    }
    all = std::move(found);
    const int rows = std::min<int>(count(), mostRows);
    const QSize inner(sizeHintForColumn(0), rows * sizeHintForRow(0));
    resize(inner + QSize(2 * frameWidth() + 4, 2 * frameWidth()));
    const QRect room = screen()->availableGeometry();
    QPoint corner = place + QPoint(gap, gap);
    if (corner.x() + width() > room.right())
        corner.setX(place.x() - gap - width());
    if (corner.y() + height() > room.bottom())
        corner.setY(place.y() - gap - height());
    move(corner);
    setCurrentRow(0);
    show();
}

void CandidateList::step(int by)
{
    if (isOpen())
        setCurrentRow((currentRow() + by % count() + count()) % count());
}

const Picked* CandidateList::current() const
{
    return isOpen() && currentRow() >= 0 ? &all[static_cast<std::size_t>(currentRow())] : nullptr;
}

void CandidateList::dismiss()
{
    all.clear();
    watch.clear();
    hide();
    clear();
}

void CandidateList::mouseMoveEvent(QMouseEvent* event)
{
    if (const QListWidgetItem* item = itemAt(event->position().toPoint()))
        setCurrentRow(row(item));
}

} // namespace vrkview
