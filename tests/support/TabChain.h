#pragma once

#include <QList>
#include <QRect>
#include <QString>
#include <QStringList>

class QWidget;

// Walks a window with the Tab key the way a keyboard user does, and judges what it finds.
namespace TabChain {

struct Stop {
    QWidget *widget = nullptr;
    QString name;  // what a screen reader announces (the accessible name)
    QRect rect;    // in the window's coordinates
};

// The stops Tab visits, starting at `first` (or wherever Tab goes first from the window), until
// it comes back round or leaves the window. A control that keeps the Tab key ends the walk.
QList<Stop> walk(QWidget *window, QWidget *first = nullptr);

// What is wrong with a walk: controls on screen that Tab never reaches, stops that are hidden,
// disabled or nameless, a stop that keeps Tab, and steps against reading order (top to bottom; left to right within a row). Empty when fine.
QStringList faults(QWidget *window, const QList<Stop> &stops);

// For messages: the names in order.
QString describe(const QList<Stop> &stops);

} // namespace TabChain
