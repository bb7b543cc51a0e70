#pragma once
// The procedure's screen, writing down what it is shown.
#include <string>
#include <utility>
#include <vector>

#include "update/Update.h"

struct CRecordingScreen : CUpdateScreen {
    std::vector<std::string> texts;
    std::vector<std::pair<int, int>> progress;  // position, maximum
    void ShowStatusText(const std::string& text) override { texts.push_back(text); }
    void ShowProgress(int position, int maximum) override { progress.emplace_back(position, maximum); }
};
