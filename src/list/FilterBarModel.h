#pragma once

#include <QList>
#include <QObject>
#include <QString>
#include <QStringList>

#include <functional>

// The filter bar without its drawing: rows of toggle buttons in segments, one selected button per
// segment, and the decision of which titles still fit in the bar and which go into the overflow
// menu. The widget measures (button widths from its font, the overflow button's size) and draws
// what this model lays out; every rule lives here so it can be tested without a window.
//
// Quirks that are deliberate and kept: the x position keeps advancing after a title overflowed, so
// once one title overflows every later one does; only the first addItems call since the bar was
// last emptied is remembered and replayed on a resize; after a resize the selection is matched to
// the segments by position in one flat list of selected titles.
class FilterBarModel : public QObject
{
    Q_OBJECT
public:
    struct Metrics {
        // Width of a button holding this title, sized to fit.
        std::function<int(const QString &)> buttonWidth = [](const QString &title) {
            return 16 + 7 * int(title.size());
        };
        int buttonHeight = 18;
        int dividerWidth = 2;
        int dividerHeight = 18;
        int overflowButtonWidth = 16;
        int overflowButtonHeight = 16;
    };

    enum class Kind {
        Button,       // a toggle button standing in the bar
        MenuItem,     // a title moved into the overflow menu
        Divider,      // the image that closes a segment in the bar
        MenuSeparator // the separator that closes a segment in the overflow menu
    };

    struct Item {
        Kind kind = Kind::Button;
        QString title;
        bool on = false;
        // Frame in the bar; meaningful for buttons and dividers only.
        int x = 0;
        int y = 0;
        int width = 0;
        int height = 0;

        bool isDivider() const { return kind == Kind::Divider || kind == Kind::MenuSeparator; }
    };
    using Segment = QList<Item>;

    static constexpr int FirstButtonX = 7;

    explicit FilterBarModel(QObject *parent = nullptr);

    void setMetrics(const Metrics &metrics) { m_metrics = metrics; }
    const Metrics &metrics() const { return m_metrics; }

    // The bar's size. A change of size re-lays the bar out (the resize rule); the first call only
    // records it.
    void setSize(int width, int height);
    int width() const { return m_width; }
    int height() const { return m_height; }

    // Adds the titles ("DIVIDER" closes the current segment and opens the next), then turns on the
    // first item of every segment. The first call since the bar was emptied is remembered, with its
    // action, for re-laying the bar out; the action is what every button sends.
    void addItemsWithTitles(const QStringList &titles, std::function<void()> action);
    void removeAllItems();

    // "" / -1 when the segment does not exist or nothing in it is on.
    QString getSelectedTitleInSegment(int segment) const;
    int getSelectedIndexInSegment(int segment) const;
    // Turns on the first item of the segment with exactly this title and sends the action; nothing
    // happens when there is no such segment or title.
    void selectTitleInSegment(const QString &title, int segment);
    // Acts on the item at `position` as if it were clicked; -1, a missing segment or a position
    // past the end does nothing.
    void selectIndexInSegment(int position, int segment);
    // What a click on a button or an overflow menu item does: it alone is on in its segment, and
    // the remembered action is sent.
    void performAction(int segment, int position);

    const QList<Segment> &segments() const { return m_segments; }
    bool hasOverflowMenu() const { return m_hasOverflowMenu; }
    int overflowButtonX() const { return m_width - m_metrics.overflowButtonWidth; }
    int overflowButtonY() const { return (m_height - m_metrics.overflowButtonHeight) / 2; }
    int nextButtonX() const { return m_buttonX; }
    // The titles of the overflow menu in order, separators as "DIVIDER".
    QStringList overflowMenuTitles() const;

Q_SIGNALS:
    // The items, their frames or the overflow menu changed: the widget lays out and redraws.
    void layoutChanged();
    // Which items are on changed.
    void selectionChanged();

private:
    void addTitles(const QStringList &titles);
    void addButton(const QString &title);
    void addDivider();
    void clearItems();
    bool fits() const { return m_width - m_metrics.overflowButtonWidth > m_buttonX; }

    Metrics m_metrics;
    int m_width = 0;
    int m_height = 0;
    int m_buttonX = FirstButtonX;
    bool m_hasOverflowMenu = false;
    QList<Segment> m_segments{Segment()};

    bool m_remembered = false;
    QStringList m_originalTitles;
    std::function<void()> m_originalAction;
};
