// The whole program on a stage: the real main window and its windows without a screen, threads and all, on
// scripted ports and a manual clock. README.md tells the commands it adds.
#pragma once

#include <QTimer>
#include <deque>
#include <map>
#include <string>

#include "tests/support/temporary_terminal.h"
#include "tests/wire/wire_stage.h"

class AppStage : public WireStage {
  public:
    explicit AppStage(Conversation::Complaint complain);
    ~AppStage() override;

    void CheckEnd(int line) override;

  private:
    void Prepare(const Words& words) override;
    DWORD CallByName(const Words& words) override;
    void Expect(const Words& words, int line) override;
    std::uint64_t NextTimer() override;
    void RunMainWindow() override;

    DWORD OpenMenu(const std::string& item);
    // Looks for boxes and menus, which run loops of their own, and answers them.
    void AnswerWindows();
    void ExpectText(int line, const std::string& what, const std::string& expected, const std::string& got);
    // What the keyboard has typed since the last look.
    std::string Typed();

    TemporaryTerminal terminal_;
    QTimer watch_;
    std::deque<std::string> boxes_;  // texts of those that came
    Words atBox_;                    // called while the next one is up
    Words atTime_;                   // called at this time of the clock
    std::uint64_t time_ = layer::Forever;
    std::map<std::string, std::string> items_;  // of the menu that was opened last
    std::string pick_;                          // what to take of it
    std::size_t typed_ = 0;
};
