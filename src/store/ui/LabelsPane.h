#pragma once

#include "store/ui/PreferencePane.h"

#include <QHash>

class QLineEdit;
class QPushButton;

// The Labels pane: one field per label, in the order of the labels table, each change saving the
// whole dictionary.
class LabelsPane : public PreferencePane
{
    Q_OBJECT
public:
    explicit LabelsPane(QWidget *parent = nullptr);

    // `setLabels`
    void setLabels();
    // `setDefaultLabels:`
    void setDefaultLabels();
    // `setNextTabViews`: tab order follows the table.
    void setNextTabViews();
    QLineEdit *field(const QString &key) const { return m_fields.value(key); }

private:
    void fill();

    QHash<QString, QLineEdit *> m_fields;
    QPushButton *m_reset;
    bool m_filling = false;
};
