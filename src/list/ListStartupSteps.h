#pragma once

#include "store/StartupSequence.h"

class Controller;

// The list's part of the start-up steps: the sort selectors, the filter bar with its view from
// "Default View", and the first load. The main window's steps build on these; a list without a
// window (tests, benchmarks) starts through them alone.
class ListStartupSteps : public WindowStartupHooks
{
public:
    explicit ListStartupSteps(Controller &controller);

    void setSortSelectors(const QStringList &selectors) override;
    void setUpFilterBar(int viewIndex) override;
    void updateWindowInformation() override;

protected:
    Controller &m_controller;
};
