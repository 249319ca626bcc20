// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Models/RenderRecipe.h"
#include "Widgets/CommitField.h"

#include <QColor>
#include <QPushButton>

#include <optional>

namespace ferrow {

namespace ColorText {
/// "#F4F1EA"; components are clamped to 0…1, alpha is not written.
[[nodiscard]] QString hex(const RGBAColor& color);
/// Takes "#F4F1EA", "f4f1ea" and "#fff"; `alpha` goes through. Nothing for anything else.
[[nodiscard]] std::optional<RGBAColor> parse(const QString& text, double alpha = 1);
[[nodiscard]] QColor toQColor(const RGBAColor& color);
/// "red 244, green 241, blue 234", of what is drawn: colors of presets may lie anywhere.
[[nodiscard]] QString spoken(const RGBAColor& color);
} // namespace ColorText

/// A square button of 32 that shows a color and reads it out.
class ColorSwatch : public QPushButton {
    Q_OBJECT

public:
    explicit ColorSwatch(const QString& name, QWidget* parent = nullptr);
    void setColor(const RGBAColor& color);
    [[nodiscard]] const RGBAColor& color() const { return color_; }
    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    RGBAColor color_;
};

/// Swatch and hex field of one color. The swatch asks for a popover; the field takes a typed color and keeps the
/// alpha.
class ColorWell : public QWidget {
    Q_OBJECT

public:
    /// `name` as assistive technology calls it: "Border color". The field is called "… hex".
    explicit ColorWell(const QString& name, QWidget* parent = nullptr);

    [[nodiscard]] const RGBAColor& color() const { return color_; }
    /// Emits nothing.
    void setColor(const RGBAColor& color);

    /// What a popover is anchored to and returns the focus to.
    [[nodiscard]] ColorSwatch* swatch() const { return swatch_; }
    [[nodiscard]] CommitField* field() const { return field_; }

signals:
    void openRequested();
    void colorEdited(const ferrow::RGBAColor& color);
    /// The reason why a typed color can't be taken, or an empty text when all is well again.
    void errorChanged(const QString& message);

private:
    void take(const QString& text);

    ColorSwatch* swatch_ = nullptr;
    CommitField* field_ = nullptr;
    RGBAColor color_;
};

} // namespace ferrow
