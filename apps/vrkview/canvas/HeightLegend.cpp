#include "canvas/HeightLegend.h"

#include "canvas/CloudLooks.h"

#include "scene/ShownCorners.h"

#include <QCoreApplication>
#include <QFontMetricsF>
#include <QImage>
#include <QLocale>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace vrkview {
namespace {

constexpr double rowsOfText = 48;   // of a picture
constexpr double smallestText = 10; // pixels
constexpr double smallPart = 0.2;   // of the size of what is shown: a scan that is smaller needs no legend
constexpr double largestBar = 7.5;  // in heights of the text, as all that follows
constexpr double partOfBar = 0.25;  // of the picture, at most
constexpr double barWidth = 0.9;
constexpr double gap = 0.5;          // between all things, and around them
constexpr double roomOfAMark = 1.25; // from one to the next

QString translated(const char* text)
{
    return QCoreApplication::translate("HeightLegend", text);
}

/// The least of 1, 2 and 5 times a power of ten that is not below this.
double roundStep(double least)
{
    const double power = std::pow(10.0, std::floor(std::log10(least)));
    for (const double factor : {1.0, 2.0, 5.0})
        if (factor * power >= least)
            return factor * power;
    return 10 * power;
}

/// What it says and where all parts lie, the panel at 0, 0.
struct Legend {
    Legend(const ShownHeights& heights, double text, double lines)
        : title(translated(heights.range ? "Height, mm" : "Height")), marks(heightMarks(heights, lines)), text(text)
    {
        font.setPixelSize(static_cast<int>(std::lround(text)));
        const QFontMetricsF metrics(font);
        double widest = 0;
        for (const HeightMark& mark : marks)
            widest = std::max(widest, metrics.horizontalAdvance(mark.text));
        const double inner = std::max(metrics.horizontalAdvance(title), (barWidth + gap) * text + widest);
        // The marks at both ends stand half a line over.
        bar = {gap * text, (gap + 1 + 2 * gap) * text, barWidth * text, lines * text};
        panel = {0, 0, inner + 2 * gap * text, bar.bottom() + 2 * gap * text};
    }
    double margin() const { return 2 * gap * text; }

    QString title;
    std::vector<HeightMark> marks;
    double text; // pixels
    QFont font;
    QRectF bar;
    QRectF panel;
};

/// For a picture of this size; none where it would have nothing to say, or hide too much of a small one.
std::optional<Legend> legendFor(const QSize& size, double ratio)
{
    const ShownHeights heights = shownHeights();
    if (heights.clouds == 0)
        return std::nullopt;
    const vrk::visual::Box all = vrk::visual::BoxOfShown();
    if (!all.isValid() || heights.largest < smallPart * (all.max - all.min).length())
        return std::nullopt;
    const double rows = std::min(size.width(), size.height());
    const double text = std::max(smallestText * ratio, rows / rowsOfText);
    const double lines = std::min(largestBar, partOfBar * rows / text);
    if (lines < 2 * roomOfAMark)
        return std::nullopt;
    const Legend legend(heights, text, lines);
    if (legend.panel.width() > size.width() / 2.0)
        return std::nullopt;
    return legend;
}

void paint(QPainter& painter, const Legend& legend)
{
    const double text = legend.text;
    const QRectF& bar = legend.bar;
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setFont(legend.font);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(18, 20, 24, 170)); // so that it can be read over any background
    painter.drawRoundedRect(legend.panel, gap * text, gap * text);
    painter.setBrush(heightGradient(bar.bottomLeft(), bar.topLeft()));
    painter.drawRect(bar);

    painter.setPen(QPen(QColor(240, 242, 245), text / 14));
    const QRectF line(gap * text, gap * text, legend.panel.width(), text);
    painter.drawText(line, Qt::AlignLeft | Qt::AlignVCenter | Qt::TextDontClip, legend.title);
    for (const HeightMark& mark : legend.marks) {
        const double y = bar.bottom() - mark.part * bar.height();
        painter.drawLine(QPointF(bar.right(), y), QPointF(bar.right() + gap * text / 2, y));
        painter.drawText(QRectF(bar.right() + gap * text, y - text, legend.panel.width(), 2 * text),
                         Qt::AlignLeft | Qt::AlignVCenter | Qt::TextDontClip, mark.text);
    }
}

} // namespace

QLinearGradient heightGradient(const QPointF& lowest, const QPointF& highest)
{
    QLinearGradient gradient(lowest, highest);
    constexpr int stops = 16;
    for (int i = 0; i <= stops; ++i) {
        const double place = static_cast<double>(i) / stops;
        const auto color = heightColor(place);
        gradient.setColorAt(place, QColor::fromRgbF(static_cast<float>(color.r), static_cast<float>(color.g),
                                                    static_cast<float>(color.b)));
    }
    return gradient;
}

std::vector<HeightMark> heightMarks(const ShownHeights& heights, double lines)
{
    if (!heights.range)
        return {{0, translated("low")}, {1, translated("high")}};
    const auto [low, high] = *heights.range;
    const double extent = high - low;
    if (!(extent > 0)) // all of it has the colour of the middle
        return {{0.5, QLocale().toString(low, 'g', 6)}};
    // A hundredth of it can be read off the colours.
    const int decimals = std::clamp(-static_cast<int>(std::floor(std::log10(extent / 100))), 0, 6);
    const auto textOf = [decimals](double height) { return QLocale().toString(height, 'f', decimals); };
    std::vector<HeightMark> marks{{0, textOf(low)}};
    const double room = roomOfAMark / lines;
    const double step = roundStep(room * extent);
    for (double n = std::ceil(low / step); n * step < high; ++n) {
        const double part = (n * step - low) / extent;
        if (part >= room && part <= 1 - room)
            marks.push_back({part, textOf(n * step)});
    }
    marks.push_back({1, textOf(high)});
    return marks;
}

void addHeightLegend(QImage& picture)
{
    const std::optional<Legend> legend = legendFor(picture.size(), 1);
    if (!legend)
        return;
    QPainter painter(&picture);
    const double right = picture.width() - legend->margin();
    const double bottom = picture.height() - legend->margin();
    painter.translate(std::round(std::max(0.0, right - legend->panel.width())),
                      std::round(std::max(0.0, bottom - legend->panel.height())));
    paint(painter, *legend);
}

std::optional<CornerLegend> heightLegend(const QSize& view, double ratio)
{
    const std::optional<Legend> legend = legendFor(view, ratio);
    if (!legend)
        return std::nullopt;
    const QRect whole = legend->panel.toAlignedRect();
    QImage picture(whole.size(), QImage::Format_RGBA8888_Premultiplied);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    paint(painter, *legend);
    painter.end();
    return CornerLegend{picture, static_cast<int>(std::lround(legend->margin()))};
}

} // namespace vrkview
