#include "list/ui/MainWindowTestSupport.h"

#include <QApplication>
#include <QLineEdit>

using namespace ListTest;
using namespace WindowTest;

namespace {

// The controls Tab visits from `start`, by accessible name, until it comes round to it again.
QStringList tabCycle(QWidget *start)
{
    start->setFocus(Qt::TabFocusReason);
    QCoreApplication::processEvents();
    QStringList visited;
    for (int step = 0; step < 80; ++step) {
        QWidget *focus = QApplication::focusWidget();
        if (!focus)
            break;
        QTest::keyClick(focus, Qt::Key_Tab);
        QCoreApplication::processEvents();
        QWidget *next = QApplication::focusWidget();
        if (!next || next == start)
            break;
        visited.append(next->accessibleName());
    }
    return visited;
}

void expectReadingOrder(const QStringList &cycle)
{
    const std::string seen = cycle.join(QStringLiteral(" | ")).toStdString();
    // Filters first (the view segment, then the course segment), then the list, then the sidebar's
    // fields top to bottom, and the toolbar's view control last before the search field again.
    const QStringList order{QStringLiteral("All"),    QStringLiteral("Incomplete"), QStringLiteral("Complete"),
                            QStringLiteral("Assignments"), QStringLiteral("Name"),   QStringLiteral("Due date"),
                            QStringLiteral("Course"), QStringLiteral("Completed"),  QStringLiteral("Priority"),
                            QStringLiteral("Contacts"), QStringLiteral("List format")};
    qsizetype previous = -1;
    for (const QString &name : order) {
        const qsizetype at = cycle.indexOf(name, previous + 1);
        EXPECT_GT(at, previous) << name.toStdString() << " out of order in: " << seen;
        if (at > previous)
            previous = at;
    }
    EXPECT_EQ(cycle.first(), QStringLiteral("All")) << seen;
    EXPECT_EQ(cycle.last(), QStringLiteral("List format")) << seen;
    // Every stop is announced by name.
    EXPECT_FALSE(cycle.contains(QString())) << seen;
}

} // namespace

TEST(KeyboardOrder, TabGoesFromTheSearchFieldThroughTheFiltersAndTheListToTheSidebarInReadingOrder)
{
    freshPreferences();
    writeStore({record("Essay", {{"Course", "History"}}), record("Lab", {{"Course", "Biology"}})});
    Window w;
    w.select("Essay");
    QLineEdit *search = w.toolbar()->searchField();
    expectReadingOrder(tabCycle(search));

    // The filter bar makes its buttons afresh when the window's width changes; they keep their place.
    w.window->resize(w.window->width() - 120, w.window->height());
    QCoreApplication::processEvents();
    w.window->resize(w.window->width() + 120, w.window->height());
    QCoreApplication::processEvents();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    expectReadingOrder(tabCycle(search));
}
