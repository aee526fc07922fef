#include "list/ui/AssignmentCellDelegate.h"
#include "widgets/ReadableColors.h"

#include <QPalette>
#include <QStandardItemModel>
#include <QStyleOptionViewItem>
#include <gtest/gtest.h>

// The list's colours are chosen on a light background; on the desktop's dark colour scheme they
// are drawn lighter, while what the model (and so the preferences) holds stays the same.
namespace {

const QColor DarkBase(0x2b, 0x2b, 0x2b);
const QColor LightBase(Qt::white);
// The band colour the list keeps, a faint blue just below white.
const QColor StoredBand = QColor::fromRgbF(237.0f / 255.0f, 243.0f / 255.0f, 254.0f / 255.0f);

QPalette paletteWithBase(const QColor &base)
{
    QPalette palette;
    palette.setColor(QPalette::Base, base);
    palette.setColor(QPalette::Text, base.lightnessF() < 0.5 ? QColor(Qt::white) : QColor(Qt::black));
    return palette;
}

class ExposedDelegate : public AssignmentCellDelegate
{
public:
    QStyleOptionViewItem option(const QModelIndex &index, const QPalette &palette) const
    {
        QStyleOptionViewItem option;
        option.palette = palette;
        initStyleOption(&option, index);
        return option;
    }
};

} // namespace

TEST(DarkScheme, DueDateColoursAreLightenedInTheirOwnHueUntilReadable)
{
    for (const QColor &stored : {QColor(Qt::red), QColor(Qt::black), QColor(0, 0, 0xc0), QColor(0x80, 0x40, 0)}) {
        ASSERT_LT(ReadableColors::contrast(stored, DarkBase), ReadableColors::TextContrast) << stored.name().toStdString();
        const QColor drawn = ReadableColors::text(stored, DarkBase);
        EXPECT_GE(ReadableColors::contrast(drawn, DarkBase), ReadableColors::TextContrast) << stored.name().toStdString();
        if (stored.hslHue() >= 0) {
            EXPECT_NEAR(drawn.hslHue(), stored.hslHue(), 2) << stored.name().toStdString();
        }
    }
    // What reads well already, and everything on a light base, is drawn as stored.
    EXPECT_EQ(ReadableColors::text(QColor(0xff, 0xc0, 0x40), DarkBase), QColor(0xff, 0xc0, 0x40));
    EXPECT_EQ(ReadableColors::text(QColor(0xff, 0xff, 0x80), LightBase), QColor(0xff, 0xff, 0x80));
}

TEST(DarkScheme, TheDayBandStandsOffADarkBaseAsItDoesOffWhite)
{
    const QColor band = ReadableColors::band(StoredBand, DarkBase);
    EXPECT_GT(ReadableColors::luminance(band), ReadableColors::luminance(DarkBase));
    EXPECT_GT(ReadableColors::contrast(band, DarkBase), 1.1);
    // Still a background: light text on it reads as well as on the base.
    EXPECT_GE(ReadableColors::contrast(QColor(Qt::white), band), 7.0);
    EXPECT_GE(ReadableColors::contrast(ReadableColors::text(QColor(Qt::red), band), band), ReadableColors::TextContrast);
}

TEST(DarkScheme, TheTableDrawsAdjustedColoursAndLeavesTheModelsAlone)
{
    QStandardItemModel model(1, 1);
    const QModelIndex cell = model.index(0, 0);
    model.setData(cell, QStringLiteral("Essay"), Qt::DisplayRole);
    model.setData(cell, QColor(Qt::red), Qt::ForegroundRole);
    model.setData(cell, StoredBand, Qt::BackgroundRole);
    ExposedDelegate delegate;

    const QStyleOptionViewItem dark = delegate.option(cell, paletteWithBase(DarkBase));
    const QColor background = dark.backgroundBrush.color();
    EXPECT_LT(ReadableColors::luminance(background), 0.2);
    EXPECT_GE(ReadableColors::contrast(dark.palette.color(QPalette::Text), background), ReadableColors::TextContrast);
    EXPECT_EQ(model.data(cell, Qt::ForegroundRole).value<QColor>(), QColor(Qt::red));
    EXPECT_EQ(model.data(cell, Qt::BackgroundRole).value<QColor>(), StoredBand);

    const QStyleOptionViewItem light = delegate.option(cell, paletteWithBase(LightBase));
    EXPECT_EQ(light.palette.color(QPalette::Text), QColor(Qt::red));
    EXPECT_EQ(light.backgroundBrush.color(), StoredBand);
}
