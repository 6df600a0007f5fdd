#include "apps/render/ProgressBar.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cmath>
#include <functional>
#include <string>

using OV::RenderApp::ProgressBar;

namespace
{

constexpr auto AtOnce = std::chrono::milliseconds(0);

std::string ReadToEnd(int descriptor)
{
    std::string text;
    char block[1024];
    ssize_t count = 0;
    // A terminal whose other end is closed ends in an error.
    while ((count = ::read(descriptor, block, sizeof block)) > 0)
    {
        text.append(block, static_cast<std::size_t>(count));
    }
    ::close(descriptor);
    return text;
}

/// Runs the work in a process whose standard error is a terminal so many columns wide.
std::string OnTerminal(unsigned short columns, const std::function<void()>& work)
{
    winsize size{};
    size.ws_col = columns;
    size.ws_row = 24;
    int controller = -1;
    const pid_t child = ::forkpty(&controller, nullptr, nullptr, &size);
    if (child == 0)
    {
        work();
        ::_exit(0);
    }
    const std::string text = ReadToEnd(controller);
    ::waitpid(child, nullptr, 0);
    return text;
}

/// Runs the work in a process whose standard error is a pipe.
std::string OnPipe(const std::function<void()>& work)
{
    int ends[2] = {-1, -1};
    EXPECT_EQ(::pipe(ends), 0);
    const pid_t child = ::fork();
    if (child == 0)
    {
        ::dup2(ends[1], STDERR_FILENO);
        work();
        ::_exit(0);
    }
    ::close(ends[1]);
    const std::string text = ReadToEnd(ends[0]);
    ::waitpid(child, nullptr, 0);
    return text;
}

void ShowThree()
{
    ProgressBar bar("Loading", AtOnce);
    bar.Show(0);
    bar.Show(50);
    bar.Show(100);
}

} // namespace

TEST(ProgressBar, GrowsOnATerminalAndIsGoneAtTheEnd)
{
    const std::string text = OnTerminal(60, ShowThree);
    const std::string half(20, '#');
    EXPECT_NE(text.find("Loading [" + std::string(40, ' ') + "] 0%"), std::string::npos) << text;
    EXPECT_NE(text.find("Loading [" + half + std::string(20, ' ') + "] 50%"), std::string::npos) << text;
    EXPECT_NE(text.find("Loading [" + half + half + "] 100%"), std::string::npos) << text;
    ASSERT_GE(text.size(), 4u);
    EXPECT_EQ(text.substr(text.size() - 4), "\r\x1b[K");
    EXPECT_EQ(text.find('\n'), std::string::npos);
}

TEST(ProgressBar, IsSilentOffATerminal)
{
    EXPECT_EQ(OnPipe(ShowThree), "");
}

TEST(ProgressBar, IsSilentForShortWork)
{
    EXPECT_EQ(OnTerminal(60,
                         []
                         {
                             ProgressBar bar("Loading");
                             bar.Show(10);
                             bar.Show(90);
                         }),
              "");
}

TEST(ProgressBar, FitsInANarrowTerminal)
{
    EXPECT_NE(OnTerminal(30, ShowThree).find("] 50%"), std::string::npos);
    const std::string text = OnTerminal(14, ShowThree);
    EXPECT_EQ(text.find('['), text.find("[K")) << "a bar was drawn: " << text;
    EXPECT_NE(text.find("Loading 50%"), std::string::npos) << text;
}

TEST(ProgressBar, ShowsEachPercentOnce)
{
    const std::string text = OnTerminal(60,
                                        []
                                        {
                                            ProgressBar bar("Loading", AtOnce);
                                            bar.Show(10.1f);
                                            bar.Show(10.9f);
                                        });
    EXPECT_EQ(text.find("10%"), text.rfind("10%"));
}

TEST(ProgressBar, NumbersOutOfRangeAreTakenToTheNearest)
{
    const std::string text = OnTerminal(60,
                                        []
                                        {
                                            ProgressBar bar("Loading", AtOnce);
                                            bar.Show(-5);
                                            bar.Show(1000);
                                            bar.Show(std::nanf(""));
                                        });
    EXPECT_NE(text.find(" 100%"), std::string::npos) << text;
    EXPECT_EQ(text.find("1000"), std::string::npos) << text;
}
