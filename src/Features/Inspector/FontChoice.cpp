// SPDX-License-Identifier: GPL-3.0-or-later
#include "Features/Inspector/FontChoice.h"

#include "Platform/Text/TextFrame.h"
#include "Session/WindowTexts.h"

namespace ferrow {

FontChoice FontChoice::of(const Caption& caption)
{
    if (caption.face)
        return {CaptionFont::system, caption.face->family};
    return {caption.font, {}};
}

void FontChoice::applyTo(Caption& caption) const
{
    if (*this == of(caption))
        return;
    caption.font = font;
    caption.face = family.isEmpty() ? std::nullopt : std::optional(FontFace{family, {}});
}

QString FontChoice::name() const
{
    return family.isEmpty() ? WindowTexts::fontName(font) : family;
}

QFont FontChoice::sample(const QFont& base) const
{
    // Signs, or letters of another script, would not tell the name.
    if (family.isEmpty() || !FontFamilies::hasLetters(family))
        return base;
    QFont shown(base);
    shown.setFamilies(QStringList{family} + base.families());
    shown.setStyleName(QString());
    shown.setWeight(QFont::Normal);
    return shown;
}

} // namespace ferrow
