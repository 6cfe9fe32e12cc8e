#define G_LOG_DOMAIN "Roads"

#include "tests/support/messages.h"
#include "zrobservers/from_glib.h"
#include "zrobservers/recorder.h"

#include <optional>

namespace {

using FromGlib = test::Messages;

TEST_F(FromGlib, BecomesMessagesWhileTheObjectExists)
{
    const ZRRecorder recorder(*ZRGetMessageHandler());
    const ZRListener answering(*ZRGetMessageHandler(),
        [](const auto&) { g_log_structured(G_LOG_DOMAIN, G_LOG_LEVEL_INFO, "MESSAGE", "left to GLib"); });
    std::optional<ZRFromGlib> messages;
    for (int turn = 0; turn < 2; ++turn) {
        messages.emplace();
        g_message("a %d", turn);
        messages.reset();
        g_message("left to GLib");
    }
    messages.emplace();
    g_critical("b");
    g_warning("c");
    g_debug("d");
    g_log_structured(G_LOG_DOMAIN, G_LOG_LEVEL_INFO, "CODE_FUNC", "Load", "MESSAGE", "e");
    const auto seen = recorder.GetMessages();
    const struct {
        short type;
        const char* text;
        const char* place;
    } wanted[] = {{ZR_MSG_OUT, "a 0", "Roads"}, {ZR_MSG_OUT, "a 1", "Roads"}, {ZR_MSG_ERROR, "b", "Roads"},
        {ZR_MSG_WARN, "c", "Roads"}, {ZR_MSG_TRACE, "d", "Roads"}, {ZR_MSG_OUT, "e", "Load"}};
    ASSERT_EQ(seen.size(), std::size(wanted));
    for (std::size_t index = 0; index < seen.size(); ++index) {
        EXPECT_EQ(seen[index].GetType(), wanted[index].type);
        EXPECT_EQ(seen[index].GetText(), wanted[index].text);
        EXPECT_EQ(seen[index].GetLocation(), wanted[index].place);
    }
}

} // namespace
