// Messages between programs: the lines, the sockets, broadcasts, searches, numbers that all agree on.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <atomic>
#include <deque>
#include <filesystem>
#include <fstream>
#include <map>
#include <mutex>
#include <thread>

#include "platform/linux/kernel/terminal.h"
#include "platform/linux/windows/message_loop.h"
#include "platform/linux/windows/other_programs.h"
#include "platform/linux/windows/program_socket.h"
#include "tests/platform/window_fixture.h"
#include "tests/support/child_process.h"

namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::HasSubstr;

std::vector<std::string> Received;

LRESULT Note(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_COPYDATA) {
        const auto* data = reinterpret_cast<const COPYDATASTRUCT*>(lParam);
        Received.push_back("data " + std::to_string(data->dwData) + " " +
                           std::string(static_cast<const char*>(data->lpData), data->cbData));
        return 9;
    }
    if (message >= WM_USER) {
        const std::u16string name = layer::RegisteredName(message);
        Received.push_back((name.empty() ? std::to_string(message) : layer::ToUtf8(name)) + " " +
                           std::to_string(wParam) + " " + std::to_string(lParam));
        return 11;
    }
    return DefWindowProcW(window, message, wParam, lParam);
}

// Sends lines to a program as one written in another language would.
class Caller {
  public:
    explicit Caller(const std::string& program) {
        while (!connection_.Socket) {
            connection_.Socket = layer::ConnectTo(program);
        }
    }
    explicit Caller(layer::Descriptor connected) { connection_.Socket = std::move(connected); }
    void Send(const std::string& text) {
        connection_.Out += text;
        connection_.Flush();
    }
    // The next line, "closed", or "nothing" after the time.
    std::string Next(std::chrono::milliseconds longest = 3000ms) {
        const auto until = std::chrono::steady_clock::now() + longest;
        std::string line;
        while (std::chrono::steady_clock::now() < until) {
            layer::PumpMessages();
            connection_.Flush();
            switch (connection_.TakeLine(line)) {
                case layer::LineConnection::Got::Line:
                    return line;
                case layer::LineConnection::Got::Closed:
                    return "closed";
                case layer::LineConnection::Got::Nothing:
                    std::this_thread::sleep_for(1ms);
            }
        }
        return "nothing";
    }

  private:
    layer::LineConnection connection_;
};

// Another program, as one that is written in another language. Its socket stays, as that of one that was
// killed.
class Program {
  public:
    explicit Program(const std::string& name, std::string answer = "{\"window\":77,\"result\":42}\n")
        : socket_(layer::ListenAs(name)), answer_(std::move(answer)), thread_([this] { Serve(); }) {}
    ~Program() {
        gone_ = true;
        thread_.join();
    }
    // The next line that it has got, or "nothing".
    std::string Next(std::chrono::milliseconds longest = 3000ms) {
        const auto until = std::chrono::steady_clock::now() + longest;
        do {
            const std::scoped_lock lock(mutex_);
            if (!lines_.empty()) {
                const std::string line = lines_.front();
                lines_.pop_front();
                return line;
            }
        } while (std::this_thread::sleep_for(1ms), std::chrono::steady_clock::now() < until);
        return "nothing";
    }
    std::atomic<bool> Hangs{false};

  private:
    void Serve() {
        while (!gone_) {
            pollfd waiting{socket_.Number(), POLLIN, 0};
            if (poll(&waiting, 1, 5) <= 0) {
                continue;
            }
            const layer::Descriptor caller(accept(socket_.Number(), nullptr, nullptr));
            std::string line;
            for (char byte = 0; recv(caller.Number(), &byte, 1, 0) == 1 && byte != '\n';) {
                line += byte;
            }
            while (Hangs) {
                std::this_thread::sleep_for(1ms);
            }
            const std::scoped_lock lock(mutex_);
            lines_.push_back(line);
            send(caller.Number(), answer_.data(), answer_.size(), MSG_NOSIGNAL);
        }
    }

    const layer::Descriptor socket_;
    const std::string answer_;
    std::mutex mutex_;
    std::deque<std::string> lines_;
    std::atomic<bool> gone_{false};
    std::thread thread_;
};

class ProgramsTest : public WindowTest {
  protected:
    ProgramsTest() {
        layer::ForgetRegisteredMessages();
        Received.clear();
        Handle = Note;
        ping_ = RegisterWindowMessageW(TEXT("TEST_PING"));
    }
    // Broadcasts in a thread, as a receive thread does, while the main thread pumps or sleeps.
    std::chrono::milliseconds BroadcastInThread(bool pump) {
        const auto start = std::chrono::steady_clock::now();
        std::atomic<bool> done{false};
        std::thread sender([&] {
            SendMessageW(HWND_BROADCAST, ping_, 5, 6);
            done = true;
        });
        while (!done) {
            if (pump) {
                layer::PumpMessages();
            }
            std::this_thread::sleep_for(1ms);
        }
        sender.join();
        return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() -
                                                                     start);
    }
    std::string Windows(const std::string& name) const { return terminal_.Path("windows/" + name); }

    UINT ping_ = 0;
};

TEST_F(ProgramsTest, LinesFromOutside) {
    const std::string window = std::to_string(reinterpret_cast<std::uintptr_t>(window_));
    const struct {
        const char* What;
        std::string Line;
        const char* Answer;
        std::string Received;
    } cases[] = {
        {"by class and title", R"({"find":{"class":"testwindow","title":"test"}})", "\"window\":", ""},
        {"another title", R"({"find":{"class":"TestWindow","title":"Test"}})", R"("window":0)", ""},
        {"registered", R"({"message":"TEST_PING","wParam":3,"lParam":-4})", R"("result":11)",
         "TEST_PING 3 -4"},
        {"to one", R"({"message":"TEST_PING","window":)" + window + "}", R"("result":11)", "TEST_PING 0 0"},
        {"to one that is not there", R"({"message":"TEST_PING","window":77})", R"("result":0)", ""},
        {"a name that nobody registered here", R"({"message":"WM_NEVER"})", R"("result":0)", ""},
        {"bytes", R"({"message":"WM_COPYDATA","number":12,"data":"aGVsbG8="})", R"("result":9)",
         "data 12 hello"},
        {"bytes for a registered number", R"({"message":"WM_COPYDATA","number":12,"name":"TEST_PING"})",
         R"("result":9)", "data " + std::to_string(ping_) + " "},
        {"no bytes", R"({"message":"WM_COPYDATA"})", R"("result":9)", "data 0 "},
        {"the settings", R"({"message":1028,"class":"TestWindow","title":"test"})", R"("result":11)",
         "1028 0 0"},
        {"the settings of everybody", R"({"message":1028})", "error", ""},
        {"another private message", R"({"message":1025,"window":)" + window + "}", "error", ""},
        {"a message of the system", R"({"message":16,"window":)" + window + "}", "error", ""},
        {"bytes that are not base 64", R"({"message":"WM_COPYDATA","data":"####"})", "error", ""},
        {"a number that is none", R"({"message":"TEST_PING","wParam":"7"})", "error", ""},
        {"a number too large", R"({"message":"TEST_PING","lParam":1e30})", "error", ""},
        {"no message", R"({"wParam":1})", "error", ""},
        {"bytes of all kinds", "\x01\xFF{\x80}", "error", ""},
        {"a deep nest", std::string(5000, '['), "error", ""},
    };
    for (const auto& test : cases) {
        SCOPED_TRACE(test.What);
        Received.clear();
        Caller caller(layer::OwnProgram());
        caller.Send(test.Line + "\n");
        EXPECT_THAT(caller.Next(), HasSubstr(test.Answer));
        EXPECT_EQ(Received, std::vector(test.Received.empty() ? 0 : 1, test.Received));
    }
}

TEST_F(ProgramsTest, LinesInPiecesTooLongOrTooMany) {
    Caller slow(layer::OwnProgram());
    slow.Send(R"({"message":"TEST)");
    EXPECT_EQ(slow.Next(50ms), "nothing");
    slow.Send("_PING\"}\n{\"message\":\"TEST_PING\",\"wParam\":2}\n");
    EXPECT_THAT(slow.Next(), HasSubstr("result"));
    EXPECT_THAT(slow.Next(), HasSubstr("result"));
    EXPECT_THAT(Received, ElementsAre("TEST_PING 0 0", "TEST_PING 2 0"));

    Caller endless(layer::OwnProgram());
    // The listener reads while this is written, and lets go before all is there.
    const std::string piece(16 * 1024, ' ');
    std::string answer;
    for (int i = 0; i < 20 && answer != "closed"; ++i) {
        endless.Send(piece);
        answer = endless.Next(20ms);
    }
    EXPECT_EQ(answer, "closed");

    std::vector<std::unique_ptr<Caller>> crowd;
    for (int i = 0; i < 70; ++i) {
        crowd.push_back(std::make_unique<Caller>(layer::OwnProgram()));
    }
    EXPECT_EQ(crowd.back()->Next(), "closed");
    crowd.clear();
    std::this_thread::sleep_for(20ms);
    Caller late(layer::OwnProgram());
    late.Send("{\"message\":\"TEST_PING\"}\n");
    EXPECT_THAT(late.Next(), HasSubstr("result"));
}

// A program that cannot take a caller at one moment takes it at a later one, and is not deaf from then on.
TEST_F(ProgramsTest, ACallerWaitsWhileThereAreNoDescriptors) {
    const auto ask = [](Caller& caller, std::chrono::milliseconds longest) {
        caller.Send("{\"message\":\"TEST_PING\"}\n");
        return caller.Next(longest);
    };
    Caller first(layer::OwnProgram());  // whoever answers is running
    EXPECT_EQ(ask(first, 3000ms), R"({"result":11})");
    sockaddr_un address{AF_UNIX, {}};
    Windows(layer::OwnProgram()).copy(address.sun_path, sizeof address.sun_path - 1);
    layer::Descriptor last(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    rlimit usual{};
    getrlimit(RLIMIT_NOFILE, &usual);
    const rlimit few{static_cast<rlim_t>(last.Number()) + 1, usual.rlim_max};
    setrlimit(RLIMIT_NOFILE, &few);
    EXPECT_EQ(connect(last.Number(), reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    Caller early(std::move(last));
    EXPECT_EQ(ask(early, 300ms), "nothing");
    setrlimit(RLIMIT_NOFILE, &usual);
    EXPECT_EQ(early.Next(), R"({"result":11})");
    Caller later(layer::OwnProgram());
    EXPECT_EQ(ask(later, 3000ms), R"({"result":11})");
}

TEST_F(ProgramsTest, AnotherProgramIsFoundAndSentTo) {
    Program other("other");
    const HWND window = FindWindowW(TEXT("Elsewhere"), TEXT("there \u00E4"));
    EXPECT_EQ(other.Next(), "{\"find\":{\"class\":\"Elsewhere\",\"title\":\"there \xC3\xA4\"}}");
    EXPECT_TRUE(IsWindow(window));
    EXPECT_FALSE(PostMessageW(window, ping_, 0, 0));
    EXPECT_EQ(SendMessageW(window, ping_, 1, -2), 42);
    EXPECT_EQ(other.Next(), R"({"lParam":-2,"message":"TEST_PING","wParam":1,"window":77})");
    char bytes[] = {'a', 'b'};
    COPYDATASTRUCT data{ping_, sizeof bytes, bytes};
    EXPECT_EQ(SendMessageW(window, WM_COPYDATA, 0, reinterpret_cast<LPARAM>(&data)), 42);
    EXPECT_THAT(other.Next(), HasSubstr(R"("name":"TEST_PING","number":)" + std::to_string(ping_)));
    EXPECT_EQ(SendMessageW(window, WM_USER + 4, 0, 0), 42);
    EXPECT_THAT(other.Next(), HasSubstr(R"("message":1028)"));
    EXPECT_EQ(SendMessageW(window, WM_CLOSE, 0, 0), 0);
    EXPECT_EQ(other.Next(0ms), "nothing") << "does not leave the program";
}

TEST_F(ProgramsTest, ABroadcastReachesAllButThoseThatOweAnAnswer) {
    constexpr const char* Ping = R"({"lParam":6,"message":"TEST_PING","wParam":5})";
    layer::LongestSend = 1000ms;
    Program good("good");
    auto stuck = std::make_unique<Program>("stuck");
    EXPECT_LT(BroadcastInThread(true), 900ms);
    EXPECT_EQ(good.Next(), Ping);
    EXPECT_EQ(stuck->Next(), Ping);
    EXPECT_THAT(Received, ElementsAre("TEST_PING 5 6")) << "the program's own windows, once";

    stuck->Hangs = true;
    EXPECT_GE(BroadcastInThread(true), 1000ms);
    EXPECT_EQ(good.Next(), Ping) << "at once, whoever is stuck";
    EXPECT_LT(BroadcastInThread(true), 900ms) << "who owes an answer is left out";
    EXPECT_EQ(good.Next(), Ping);

    stuck->Hangs = false;
    EXPECT_EQ(stuck->Next(), Ping);
    EXPECT_LT(BroadcastInThread(true), 900ms);
    EXPECT_EQ(good.Next(), Ping);
    EXPECT_EQ(stuck->Next(), Ping) << "it has answered, and is back";
    EXPECT_EQ(stuck->Next(0ms), "nothing");

    // A dead program's socket is still there, and cleared away.
    stuck.reset();
    EXPECT_TRUE(std::filesystem::exists(Windows("stuck")));
    EXPECT_LT(BroadcastInThread(true), 900ms);
    EXPECT_FALSE(std::filesystem::exists(Windows("stuck")));
    EXPECT_EQ(good.Next(), Ping);

    // The main thread is busy: the others get it all the same, and the second time nobody waits for it.
    EXPECT_GE(BroadcastInThread(false), 1000ms);
    EXPECT_LT(BroadcastInThread(false), 900ms);
    EXPECT_EQ(good.Next(), Ping);
    EXPECT_EQ(good.Next(), Ping);
    layer::LongestSend = 5000ms;
}

TEST_F(ProgramsTest, ProgramsThatAnswerAnythingDoNoHarm) {
    layer::LongestSearch = 300ms;
    for (const std::string answer : {"{\"window\":\"x\"}\n", "{}\n", "\xFF\n", "garbage\n", ""}) {
        SCOPED_TRACE(answer);
        Program odd("odd", answer);
        EXPECT_EQ(FindWindowW(TEXT("Odd"), nullptr), nullptr);
        EXPECT_EQ(odd.Next(), R"({"find":{"class":"Odd"}})");
    }
    layer::LongestSearch = 2000ms;
}

// One that is killed while its socket gets its name leaves one that is nobody's.
TEST_F(ProgramsTest, ANewProgramClearsWhatOneThatDiedAtItsStartHasLeft) {
    ChildProcess dead({"true"});
    ASSERT_EQ(dead.Wait(), 0);
    const auto hidden = [](pid_t id) { return layer::WindowsFolder() + "/." + std::to_string(id) + "-1"; };
    std::ofstream(hidden(dead.Id()));
    std::ofstream(hidden(getppid()));
    const layer::Descriptor socket(layer::ListenAs("new"));
    EXPECT_FALSE(std::filesystem::exists(hidden(dead.Id())));
    EXPECT_TRUE(std::filesystem::exists(hidden(getppid()))) << "it is still at its start";
}

// The listener of the documentation, as it stands there.
TEST_F(ProgramsTest, TheListenerOfTheDocumentationWorks) {
    const std::string page = ReadWholeFile(DOCUMENTATION);
    const std::size_t start = page.find("```python\n") + 10;
    ASSERT_LT(start, page.size());
    WriteWholeFile(terminal_.Path("listener.py"), page.substr(start, page.find("```", start) - start));
    ChildProcess python({"/usr/bin/env", "python3", terminal_.Path("listener.py")});
    for (int i = 0; i < 500 && !std::filesystem::exists(Windows("listener")); ++i) {
        std::this_thread::sleep_for(10ms);
    }
    EXPECT_LT(BroadcastInThread(true), 2000ms);
    EXPECT_EQ(python.ReadLine(), "TEST_PING 5 None");
    char bytes[] = {'h', 'i'};
    COPYDATASTRUCT data{ping_, sizeof bytes, bytes};
    SendMessageW(HWND_BROADCAST, WM_COPYDATA, 0, reinterpret_cast<LPARAM>(&data));
    EXPECT_EQ(python.ReadLine(), "WM_COPYDATA 0 aGk=");
}

TEST_F(ProgramsTest, NumbersOfRegisteredMessagesAreTheSameEverywhere) {
    const UINT decode = RegisterWindowMessageW(TEXT("WM_DECODE"));
    EXPECT_GE(decode, 0xC000u);
    EXPECT_LE(decode, 0xFFFFu);
    EXPECT_EQ(RegisterWindowMessageW(TEXT("wm_decode")), decode) << "letter case aside";
    EXPECT_EQ(RegisterWindowMessageW(TEXT("")), 0u);
    EXPECT_EQ(RegisterWindowMessageW(TEXT("two\nlines")), 0u);

    // Enough names that some meet on one number: all differ, and a program that starts later has the same.
    std::map<UINT, std::u16string> numbers;
    for (int i = 0; i < 250; ++i) {
        const std::u16string name = layer::FromUtf8("NAME_" + std::to_string(i));
        EXPECT_TRUE(numbers.emplace(RegisterWindowMessageW(name.c_str()), name).second) << i;
    }
    layer::ForgetRegisteredMessages();
    for (const auto& [number, name] : numbers) {
        EXPECT_EQ(RegisterWindowMessageW(name.c_str()), number) << layer::ToUtf8(name);
    }
}

TEST_F(ProgramsTest, ADamagedListOfNumbersIsReadForWhatItIsWorth) {
    layer::ForgetRegisteredMessages();
    WriteWholeFile(Windows("messages"),
                   "zzzz nothing\nC000\n1234 TOO_LOW\nC123 GOOD\nC124 GOOD\nC123 SECOND\n\xFF\xFE\n");
    EXPECT_EQ(RegisterWindowMessageW(TEXT("GOOD")), 0xC123u);
    const UINT second = RegisterWindowMessageW(TEXT("SECOND"));
    EXPECT_GE(second, 0xC000u);
    EXPECT_NE(second, 0xC123u);
    EXPECT_GE(RegisterWindowMessageW(TEXT("TOO_LOW")), 0xC000u);
}

}  // namespace
