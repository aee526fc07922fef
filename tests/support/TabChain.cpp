#include "TabChain.h"

#include <QAccessible>
#include <QApplication>
#include <QTest>
#include <QWidget>

#include <algorithm>

namespace TabChain {

namespace {
constexpr int MaxStops = 80;

QString accessibleName(QWidget *widget)
{
    // On Linux a pop-up announces its current text as its name (its label goes by a relation), so an
    // empty one falls back to the name the program gave it.
    QAccessibleInterface *interface = QAccessible::queryAccessibleInterface(widget);
    const QString name = interface ? interface->text(QAccessible::Name) : QString();
    return name.isEmpty() ? widget->accessibleName() : name;
}

QWidget *focusIn(QWidget *window)
{
    QWidget *focus = QApplication::focusWidget();
    return focus && focus->window() == window ? focus : nullptr;
}
} // namespace

QList<Stop> walk(QWidget *window, QWidget *first)
{
    window->activateWindow();
    if (!QTest::qWaitForWindowActive(window))
        return {};
    if (first) {
        first->setFocus(Qt::TabFocusReason);
    } else {
        // From nowhere in particular: the window's own first stop.
        if (QWidget *focus = QApplication::focusWidget())
            focus->clearFocus();
        QTest::keyClick(window, Qt::Key_Tab);
    }
    QCoreApplication::processEvents();
    QList<Stop> stops;
    QWidget *start = focusIn(window);
    QWidget *current = start;
    while (current && stops.size() < MaxStops) {
        stops.append({current, accessibleName(current),
                      QRect(current->mapTo(window, QPoint(0, 0)), current->size())});
        QTest::keyClick(current, Qt::Key_Tab);
        QCoreApplication::processEvents();
        QWidget *next = focusIn(window);
        if (!next || next == start)
            break;
        if (next == current) {
            stops.append({current, QStringLiteral("<keeps Tab>"), stops.last().rect});
            break;
        }
        current = next;
    }
    // A window may open with the keyboard on its default button; the cycle is read from the stop
    // that comes first on the page: the leftmost of the top row.
    if (stops.size() > 1 && stops.last().name != QStringLiteral("<keeps Tab>")) {
        const auto top = std::min_element(stops.begin(), stops.end(),
                                          [](const Stop &a, const Stop &b) { return a.rect.top() < b.rect.top(); });
        auto first = top;
        for (auto it = stops.begin(); it != stops.end(); ++it) {
            if (it->rect.top() <= top->rect.bottom() && it->rect.left() < first->rect.left())
                first = it;
        }
        std::rotate(stops.begin(), first, stops.end());
    }
    return stops;
}

QStringList unreached(QWidget *window, const QList<Stop> &stops);

QStringList faults(QWidget *window, const QList<Stop> &stops)
{
    QStringList found = unreached(window, stops);
    for (qsizetype i = 0; i < stops.size(); ++i) {
        const Stop &stop = stops.at(i);
        const QString label = stop.name.isEmpty() ? stop.widget->objectName() : stop.name;
        if (stop.name == QStringLiteral("<keeps Tab>")) {
            found.append(QStringLiteral("%1 keeps the Tab key").arg(stop.widget->objectName()));
            continue;
        }
        if (!stop.widget->isVisibleTo(window) || !stop.widget->isVisible())
            found.append(QStringLiteral("%1 is hidden").arg(label));
        if (!stop.widget->isEnabled())
            found.append(QStringLiteral("%1 is disabled").arg(label));
        if (stop.name.trimmed().isEmpty())
            found.append(QStringLiteral("%1 (%2) has no accessible name")
                             .arg(stop.widget->objectName(), QString::fromLatin1(stop.widget->metaObject()->className())));
        if (i == 0)
            continue;
        const QRect a = stops.at(i - 1).rect;
        const QRect b = stop.rect;
        // One row when they overlap vertically by at least half of the smaller one.
        const int overlap = std::min(a.bottom(), b.bottom()) - std::max(a.top(), b.top());
        const bool sameRow = overlap >= std::min(a.height(), b.height()) / 2;
        // Down the page, or on to the next column to the right (a list beside its form).
        const bool inOrder = sameRow ? b.left() >= a.left() : (b.top() >= a.top() || b.left() > a.right());
        if (!inOrder)
            found.append(QStringLiteral("%1 -> %2 goes against reading order").arg(stops.at(i - 1).name, label));
    }
    return found;
}

QStringList unreached(QWidget *window, const QList<Stop> &stops)
{
    QStringList found;
    const QList<QWidget *> widgets = window->findChildren<QWidget *>();
    for (QWidget *widget : widgets) {
        if (widget->window() != window || !widget->isVisible() || !widget->isEnabled() || widget->focusProxy()
            || !(widget->focusPolicy() & Qt::TabFocus))
            continue;
        const bool reached = std::any_of(stops.cbegin(), stops.cend(), [widget](const Stop &stop) { return stop.widget == widget; });
        if (!reached)
            found.append(QStringLiteral("%1 (%2, \"%3\") is never reached with Tab")
                             .arg(widget->objectName(), QString::fromLatin1(widget->metaObject()->className()), accessibleName(widget)));
    }
    return found;
}

QString describe(const QList<Stop> &stops)
{
    QStringList names;
    for (const Stop &stop : stops)
        names.append(stop.name.isEmpty() ? QLatin1Char('<') + stop.widget->objectName() + QLatin1Char('>') : stop.name);
    return names.join(QStringLiteral(" | "));
}

} // namespace TabChain
