#pragma once

#include <QString>
#include <QWidget>

// Every control gets an object name (tests and style sheets find it by that) and an accessible name
// (what a screen reader says).
template<typename W>
W *named(W *widget, const QString &objectName, const QString &accessibleName)
{
    widget->setObjectName(objectName);
    widget->setAccessibleName(accessibleName);
    return widget;
}

#include <QLabel>

// A caption for a control: named after it, and its buddy so a screen reader pairs the two.
inline QLabel *captionFor(QWidget *buddy, const QString &text)
{
    auto *label = new QLabel(text);
    label->setObjectName(buddy->objectName() + QStringLiteral("Caption"));
    label->setBuddy(buddy);
    return label;
}
