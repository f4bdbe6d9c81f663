#pragma once

#include <QDoubleSpinBox>

#include <optional>

namespace vrkview {

/// A number between limits of which any other may be typed: when typing is done it is held to them, and told.
class LimitBox : public QDoubleSpinBox {
    Q_OBJECT

public:
    explicit LimitBox(QWidget* parent = nullptr);

signals:
    /// The user typed a number beyond the limits. The value is the limit by then.
    void limited(double typed);

protected:
    QValidator::State validate(QString& text, int& place) const override;
    void fixup(QString& text) const override;

private:
    std::optional<double> numberOf(QString text) const;

    mutable std::optional<double> beyond; // typed, and not told yet
};

} // namespace vrkview
