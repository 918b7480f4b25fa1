// Sound and vibrator.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <mutex>
#include <thread>
#include <vector>

#include "platform/kernel.h"
#include "platform/linux/kernel/sound_backend.h"
#include "platform/linux/kernel/thread.h"
#include "platform/sound.h"
#include "tests/support/allocation_count.h"
#include "tests/support/temporary_terminal.h"

namespace {

constexpr DWORD AsFile = SND_FILENAME | SND_NOWAIT | SND_ASYNC;

// Notes what it is told, unless it is held up.
struct Notes {
    std::atomic<int> Told = 0;
    std::mutex Hold;
    std::vector<std::string> Lines;

    void Add(const std::string& line) {
        ++Told;
        const std::scoped_lock lock(Hold);
        Lines.push_back(line);
    }
};

class NotingSound : public layer::SoundBackend {
  public:
    explicit NotingSound(Notes& notes) : notes_(notes) {}
    bool Play(const std::string& path) override {
        notes_.Add("play " + path);
        return true;
    }
    void Cancel() override { notes_.Add("cancel"); }

  private:
    Notes& notes_;
};

TEST(Sound, TheNewestWishCountsAndNoCallerWaits) {
    const TemporaryTerminal terminal;
    static Notes notes;
    notes.Lines.clear();
    layer::InstallSound(std::make_unique<NotingSound>(notes));
    EXPECT_TRUE(PlaySoundW(TEXT("\\Windows\\Default.wav"), nullptr, AsFile));
    layer::FinishSounds();
    std::unique_lock hold(notes.Hold);
    const int before = notes.Told;
    EXPECT_TRUE(PlaySoundW(nullptr, nullptr, SND_NOWAIT));
    while (notes.Told == before) {
        std::this_thread::yield();
    }
    // The sound thread stands still now; all of this returns at once, and takes nothing from the heap.
    const CountAllocations allocations;
    EXPECT_TRUE(PlaySoundW(TEXT("\\Windows\\Alarm2.wav"), nullptr, AsFile));
    EXPECT_TRUE(PlaySoundW(nullptr, nullptr, SND_NOWAIT));
    EXPECT_TRUE(PlaySoundW(TEXT("\\Windows\\LowBatt.wav"), nullptr, AsFile));
    EXPECT_EQ(allocations.Count(), 0u);
    hold.unlock();
    layer::FinishSounds();
    EXPECT_TRUE(PlaySoundW(TEXT("\\..\\escape.wav"), nullptr, AsFile));
    EXPECT_FALSE(PlaySoundW(TEXT("SystemDefault"), nullptr, SND_ASYNC));
    const std::u16string tooLong(300, u'x');
    EXPECT_FALSE(PlaySoundW(tooLong.c_str(), nullptr, AsFile));
    layer::FinishSounds();
    const std::vector<std::string> expected{
        "cancel", "play " + terminal.Path("Windows/Default.wav"), "cancel",
        "cancel", "play " + terminal.Path("Windows/LowBatt.wav"), "cancel"};
    EXPECT_EQ(notes.Lines, expected);
}

BOOL Vibrate(DWORD value) {
    return KernelIoControl(0x24321015, &value, sizeof value, nullptr, 0, nullptr);
}

TEST(Vibrator, WritesOneCharacterAndIsOffAtTheEnd) {
    const TemporaryTerminal terminal;
    const std::string file = terminal.Path("VIBRATOR");
    EXPECT_TRUE(Vibrate(0));
    EXPECT_EQ(ReadWholeFile(file), "0");
    const CountAllocations allocations;
    EXPECT_TRUE(Vibrate(1));
    EXPECT_EQ(allocations.Count(), 0u);
    EXPECT_EQ(ReadWholeFile(file), "1");
    layer::RunEndWork();
    EXPECT_EQ(ReadWholeFile(file), "0");

    // A device's file is written as it is, never cut or replaced.
    unlink(file.c_str());
    WriteWholeFile(terminal.Path("brightness"), "0\n");
    ASSERT_EQ(symlink("brightness", file.c_str()), 0);
    EXPECT_TRUE(Vibrate(1));
    EXPECT_EQ(ReadWholeFile(terminal.Path("brightness")), "1\n");
    layer::RunEndWork();
    DWORD value = 1;
    EXPECT_FALSE(KernelIoControl(0x24321016, &value, sizeof value, nullptr, 0, nullptr));
}

}  // namespace
