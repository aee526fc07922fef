#pragma once

#include <QWidget>

class QComboBox;
class QLineEdit;
class QStackedWidget;
class QToolButton;

// A due-date editor with two faces: a text field (typed dates, natural language allowed) with a
// today button and a stepper, or three pull-down menus for month ("%b"), day ("%e") and year. The
// "Date Entry Format" setting picks the face. The editor only shows and reports; reading the date
// is the list's work.
class DateEditor : public QWidget
{
    Q_OBJECT
public:
    enum Face { TextFace = 0, PullDownFace = 1 };

    // `name` prefixes the objectNames and accessible names ("Due date", "Starting date").
    DateEditor(const QString &name, const QString &objectPrefix, QWidget *parent = nullptr);

    void setFace(int face);
    int face() const;

    QString text() const;
    void setText(const QString &text);
    // The three selected titles; "" where nothing is selected.
    QString monthTitle() const;
    QString dayTitle() const;
    QString yearTitle() const;
    // Fills the day menu for the month and selects the titles ("" selects nothing).
    void setTitles(const QString &month, const QString &day, const QString &year);

    QLineEdit *textField() const { return m_text; }
    QToolButton *todayButton() const { return m_today; }
    QToolButton *upButton() const { return m_up; }
    QToolButton *downButton() const { return m_down; }
    QComboBox *monthMenu() const { return m_month; }
    QComboBox *dayMenu() const { return m_day; }
    QComboBox *yearMenu() const { return m_year; }

Q_SIGNALS:
    void textEditingFinished();
    void todayClicked();
    // +1 or -1 day.
    void stepped(int days);
    // A pull-down changed; `month` when it was the month menu.
    void pullDownChanged(bool month);

private:
    void fillDays(const QString &month);
    static void selectTitle(QComboBox *menu, const QString &title);
    static QString selectedTitle(const QComboBox *menu);

    QStackedWidget *m_faces;
    QLineEdit *m_text;
    QToolButton *m_today;
    QToolButton *m_up;
    QToolButton *m_down;
    QComboBox *m_month;
    QComboBox *m_day;
    QComboBox *m_year;
};
