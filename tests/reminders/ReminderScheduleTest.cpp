#include "TestEnvironment.h"

#include "platform/Clock.h"
#include "platform/DateText.h"
#include "platform/UserDefaults.h"
#include "reminders/ReminderPlan.h"
#include "reminders/ReminderRecords.h"
#include "reminders/ReminderSchedule.h"
#include "reminders/ReminderTexts.h"
#include "store/PreferenceKeys.h"

#include <QCoreApplication>
#include <gtest/gtest.h>

namespace {

// The pinned clock reads Sunday 2026-11-22 10:30 in New York.
QDateTime at(int day, int hour, int minute = 0)
{
    return QDateTime(QDate(2026, 11, day), QTime(hour, minute));
}

AssignmentRef assignment(const QString &name, const QDateTime &due, bool completed = false)
{
    QVariantMap fields{{AssignmentKeys::Name, name}, {AssignmentKeys::Date, DateText::toStoredForm(due)}};
    if (completed)
        fields.insert(AssignmentKeys::Completed, qint64(1));
    return Assignments::make(fields);
}

QStringList names(const Reminder &reminder)
{
    QStringList list;
    for (const AssignmentRef &record : reminder.assignments)
        list.append(record->string(AssignmentKeys::Name));
    return list;
}

struct Delivered {
    QList<Reminder> reminders;
    explicit Delivered(ReminderSchedule &schedule)
    {
        QObject::connect(&schedule, &ReminderSchedule::reminderDue,
                         [this](const Reminder &reminder) { reminders.append(reminder); });
    }
};

} // namespace

TEST(ReminderPlan, DefaultLeadTimesSkipCompletedAndUndatedAndGroupByMoment)
{
    const AssignmentList list{assignment("Essay", at(24, 9)), assignment("Lab", at(24, 9)),
                              assignment("Quiz", at(24, 14)), assignment("Done", at(24, 9), true),
                              Assignments::make({{AssignmentKeys::Name, QStringLiteral("Someday")}})};
    const ReminderPlan plan{ReminderSettings()};
    // Across the whole week: the evening before (Monday 18:00, all three together), then two hours
    // before each due time.
    const QList<Reminder> week =
        plan.between(list, at(22, 0).toMSecsSinceEpoch(), at(29, 0).toMSecsSinceEpoch());
    ASSERT_EQ(week.size(), 3);
    EXPECT_EQ(week[0].moment, at(23, 18));
    EXPECT_EQ(names(week[0]), QStringList({"Essay", "Lab", "Quiz"}));
    EXPECT_EQ(week[1].moment, at(24, 7));
    EXPECT_EQ(names(week[1]), QStringList({"Essay", "Lab"}));
    EXPECT_EQ(week[2].moment, at(24, 12));
    EXPECT_EQ(plan.nextMoment(list, at(23, 18).toMSecsSinceEpoch()), at(24, 7).toMSecsSinceEpoch());
    EXPECT_EQ(plan.nextMoment(list, at(24, 12).toMSecsSinceEpoch()), std::nullopt);

    const QDateTime monday = at(23, 18);
    EXPECT_EQ(ReminderTexts::title(week[0], monday), QStringLiteral("3 assignments due tomorrow"));
    EXPECT_EQ(ReminderTexts::title(week[2], at(24, 12)), QStringLiteral("Quiz"));
    EXPECT_EQ(ReminderTexts::body(week[2], at(24, 12)), QStringLiteral("Due today at 2:00 PM"));

    // Turned off, or with other lead times, the moments follow the preferences.
    ReminderSettings off;
    off.enabled = false;
    EXPECT_TRUE(ReminderPlan(off).between(list, 0, at(29, 0).toMSecsSinceEpoch()).isEmpty());
    ReminderSettings custom;
    custom.eveningBefore = false;
    custom.leadMinutes = {30, 24 * 60};
    const QList<Reminder> customWeek = ReminderPlan(custom).between(list, 0, at(29, 0).toMSecsSinceEpoch());
    ASSERT_EQ(customWeek.size(), 4);
    EXPECT_EQ(customWeek[0].moment, at(23, 9));
    EXPECT_EQ(customWeek[2].moment, at(24, 8, 30));
}

TEST(ReminderPlan, EveningBeforeFollowsTheLocalDayAcrossADaylightSavingChange)
{
    // 2027-03-14 is the spring change in New York: the evening before is still 18:00 local.
    const AssignmentList list{assignment("Paper", QDateTime(QDate(2027, 3, 15), QTime(10, 0)))};
    const ReminderPlan plan{ReminderSettings()};
    const auto first = plan.nextMoment(list, at(22, 0).toMSecsSinceEpoch());
    ASSERT_TRUE(first);
    EXPECT_EQ(QDateTime::fromMSecsSinceEpoch(*first), QDateTime(QDate(2027, 3, 14), QTime(18, 0)));
}

TEST(ReminderSettings, DefaultsRoundTripAndStayInTheirOwnGroup)
{
    const ReminderSettings defaults = ReminderSettings::load();
    EXPECT_TRUE(defaults.enabled);
    EXPECT_TRUE(defaults.eveningBefore);
    EXPECT_EQ(defaults.leadMinutes, QList<int>({120}));
    EXPECT_FALSE(defaults.keepInTray);

    UserDefaults().set(PreferenceKeys::General, QVariantMap{{QStringLiteral("Date Format"), QStringLiteral("%m")}});
    ReminderSettings::setLastDelivered(at(22, 10, 30));
    ReminderSettings changed;
    changed.eveningBefore = false;
    changed.leadMinutes = {15, 60};
    changed.keepInTray = true;
    changed.save();
    const ReminderSettings read = ReminderSettings::load();
    EXPECT_FALSE(read.eveningBefore);
    EXPECT_EQ(read.leadMinutes, QList<int>({15, 60}));
    EXPECT_TRUE(read.keepInTray);
    EXPECT_EQ(ReminderSettings::lastDelivered(), at(22, 10, 30));
    // The other groups are left as they were.
    EXPECT_EQ(UserDefaults().dictionary(PreferenceKeys::General).size(), 1);

    // A hand-edited list keeps only positive whole minutes, once each.
    QVariantMap group = UserDefaults().dictionary(ReminderSettings::Group);
    group.insert(ReminderSettings::LeadMinutesKey,
                 QVariantList{qint64(30), QStringLiteral("x"), qint64(-5), qint64(30), qint64(10)});
    UserDefaults().set(ReminderSettings::Group, group);
    EXPECT_EQ(ReminderSettings::load().leadMinutes, QList<int>({10, 30}));
}

TEST(ReminderSchedule, OneTimerForTheNextReminderFollowsEditsAndCompletion)
{
    AssignmentList list{assignment("Essay", at(22, 14)), assignment("Lab", at(23, 9))};
    ReminderSchedule schedule([&] { return list; });
    Delivered delivered(schedule);
    schedule.start();
    // The first run starts counting from now: nothing from the past is shown.
    EXPECT_TRUE(delivered.reminders.isEmpty());
    EXPECT_EQ(ReminderSettings::lastDelivered(), TestEnvironment::pinnedNow());
    EXPECT_EQ(schedule.nextReminder(), at(22, 12));
    EXPECT_TRUE(schedule.timer().isActive());
    // An hour and a half away: the timer looks again after at most an hour, then waits the rest.
    EXPECT_EQ(schedule.timer().interval(), int(ReminderSchedule::LongestWait));
    Clock::pin(at(22, 11, 30));
    schedule.recompute();
    EXPECT_EQ(schedule.timer().interval(), 30 * 60 * 1000);
    Clock::pin(TestEnvironment::pinnedNow());

    // Completing the essay moves the timer on to the lab's evening-before reminder.
    list[0]->set(AssignmentKeys::Completed, qint64(1));
    schedule.scheduleRecompute();
    QCoreApplication::processEvents();
    EXPECT_EQ(schedule.nextReminder(), at(22, 18));

    // Moving the lab's due date to the afternoon brings its two-hours-before reminder forward.
    list[1]->set(AssignmentKeys::Date, DateText::toStoredForm(at(22, 13)));
    schedule.scheduleRecompute();
    QCoreApplication::processEvents();
    EXPECT_EQ(schedule.nextReminder(), at(22, 11));

    // When the moment comes the reminder is shown once, and the last delivery moves with it.
    Clock::pin(at(22, 11, 1));
    schedule.deliverDue();
    ASSERT_EQ(delivered.reminders.size(), 1);
    EXPECT_EQ(names(delivered.reminders[0]), QStringList({"Lab"}));
    EXPECT_FALSE(delivered.reminders[0].missed);
    schedule.deliverDue();
    EXPECT_EQ(delivered.reminders.size(), 1);
    EXPECT_EQ(schedule.nextReminder(), std::nullopt);
    EXPECT_FALSE(schedule.timer().isActive());

    // Snoozed for an hour, it comes back then, unless it was completed meanwhile.
    schedule.snooze({list[1]});
    EXPECT_EQ(schedule.nextReminder(), at(22, 12, 1));
    Clock::pin(at(22, 12, 1));
    schedule.deliverDue();
    ASSERT_EQ(delivered.reminders.size(), 2);
    schedule.snooze({list[1]});
    list[1]->set(AssignmentKeys::Completed, qint64(1));
    Clock::pin(at(22, 13, 2));
    schedule.deliverDue();
    EXPECT_EQ(delivered.reminders.size(), 2);
}

TEST(ReminderSchedule, ASnoozedRecordEditedMeanwhileComesBackAsItIsNow)
{
    AssignmentList list{assignment("Essay", at(22, 14)), assignment("Lab", at(22, 16))};
    list[0]->set(AssignmentKeys::DateCreated, 1700000000.25);
    list[1]->set(AssignmentKeys::DateCreated, 1700000000.5);
    ReminderSchedule schedule([&] { return list; });
    Delivered delivered(schedule);
    schedule.start();
    schedule.snooze({list[0], list[1]});
    // Every edit puts a changed copy in the record's place; the lab is deleted.
    AssignmentRef renamed = Assignments::copy(list[0]);
    renamed->set(AssignmentKeys::Name, QStringLiteral("Essay, second draft"));
    list = {renamed};
    Clock::pin(TestEnvironment::pinnedNow().addSecs(3600));
    schedule.deliverDue();
    ASSERT_EQ(delivered.reminders.size(), 1);
    EXPECT_EQ(names(delivered.reminders[0]), QStringList({"Essay, second draft"}));
    EXPECT_EQ(delivered.reminders[0].assignments[0].get(), renamed.get());
}

TEST(ReminderSchedule, WhatFellWhileClosedIsShownOnceAtTheNextStart)
{
    // Last run: Friday evening. Since then the evening-before reminders of Saturday's and Sunday's
    // work, and the two-hours-before ones, have passed.
    ReminderSettings::setLastDelivered(at(20, 20));
    AssignmentList list{assignment("Reading", at(21, 9)), assignment("Problem set", at(22, 9)),
                        assignment("Finished", at(22, 9), true), assignment("Next week", at(27, 9))};
    {
        ReminderSchedule schedule([&] { return list; });
        Delivered delivered(schedule);
        schedule.start();
        ASSERT_EQ(delivered.reminders.size(), 1);
        const Reminder &missed = delivered.reminders[0];
        EXPECT_TRUE(missed.missed);
        EXPECT_EQ(names(missed), QStringList({"Reading", "Problem set"}));
        EXPECT_EQ(ReminderTexts::title(missed, Clock::now()), ReminderTexts::MissedTitle);
        EXPECT_EQ(ReminderTexts::body(missed, Clock::now()),
                  QStringLiteral("Reading, was due yesterday at 9:00 AM\nProblem set, was due today at 9:00 AM"));
        EXPECT_EQ(schedule.nextReminder(), at(26, 18));
    }
    // Started again a minute later, nothing is shown twice.
    Clock::pin(TestEnvironment::pinnedNow().addSecs(60));
    ReminderSchedule again([&] { return list; });
    Delivered delivered(again);
    again.start();
    EXPECT_TRUE(delivered.reminders.isEmpty());
}

TEST(ReminderSchedule, TurningRemindersOffInThePreferencesStopsTheTimer)
{
    AssignmentList list{assignment("Essay", at(22, 14))};
    ReminderSchedule schedule([&] { return list; });
    schedule.start();
    ASSERT_TRUE(schedule.timer().isActive());
    ReminderSettings off;
    off.enabled = false;
    off.save();
    QCoreApplication::processEvents();
    QCoreApplication::processEvents();
    EXPECT_FALSE(schedule.timer().isActive());
    EXPECT_EQ(schedule.nextReminder(), std::nullopt);
}

TEST(ReminderSchedule, ASnoozeSurvivesARestartAndForgetsWhatWasDeletedMeanwhile)
{
    // "Lab" is a record of an old version, without "Date Created": found again by name and date.
    AssignmentList list{assignment("Essay", at(23, 14)), assignment("Lab", at(23, 16)), assignment("Quiz", at(23, 17))};
    list[0]->set(AssignmentKeys::DateCreated, 1700000000.25);
    list[2]->set(AssignmentKeys::DateCreated, 1700000000.5);
    {
        ReminderSchedule schedule([&] { return list; });
        schedule.start();
        schedule.snooze({list[0], list[1], list[2]});
        EXPECT_EQ(schedule.nextReminder(), at(22, 11, 30));
    }
    // Closed for ten minutes; meanwhile another copy of the program deleted the quiz.
    list.removeLast();
    Clock::pin(at(22, 10, 40));
    ReminderSchedule again([&] { return list; });
    Delivered delivered(again);
    again.start();
    EXPECT_TRUE(delivered.reminders.isEmpty());
    EXPECT_EQ(again.nextReminder(), at(22, 11, 30));
    Clock::pin(at(22, 11, 30));
    again.deliverDue();
    ASSERT_EQ(delivered.reminders.size(), 1);
    EXPECT_EQ(names(delivered.reminders[0]), QStringList({"Essay", "Lab"}));
    // Shown, the snooze is gone from the preferences: a third start brings nothing back.
    EXPECT_TRUE(ReminderSettings::snoozed().isEmpty());
}

TEST(ReminderPlan, AnAssignmentsOwnReminderReplacesThePreferences)
{
    AssignmentList list{assignment("Essay", at(24, 9)), assignment("Lab", at(24, 9)), assignment("Quiz", at(24, 9))};
    list[0]->set(ReminderRecords::OverrideKey, qint64(0));
    list[1]->set(ReminderRecords::OverrideKey, qint64(24 * 60));
    // A value no one could have chosen counts as no override at all.
    list[2]->set(ReminderRecords::OverrideKey, QStringLiteral("soon"));
    const QList<Reminder> week =
        ReminderPlan(ReminderSettings()).between(list, at(22, 0).toMSecsSinceEpoch(), at(29, 0).toMSecsSinceEpoch());
    ASSERT_EQ(week.size(), 3);
    EXPECT_EQ(week[0].moment, at(23, 9));
    EXPECT_EQ(names(week[0]), QStringList({"Lab"}));
    EXPECT_EQ(week[1].moment, at(23, 18));
    EXPECT_EQ(names(week[1]), QStringList({"Quiz"}));
    EXPECT_EQ(names(week[2]), QStringList({"Quiz"}));
}
