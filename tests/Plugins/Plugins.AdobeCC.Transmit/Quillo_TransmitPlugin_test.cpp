#include <array>
#include <cstring>

#include "tests/support/transmit_fixture.h"

namespace quillo::test {

namespace {

using testing::ElementsAre;

class PluginObject : public TransmitTest
{
  protected:
    // The source name that the sender gets from a host with this code.
    std::string name_for(csSDK_uint32 code)
    {
        host.app_code = code;
        log.clear();
        start_up();
        functions.Shutdown(&parms);
        auto const lines = log.lines({"Quillolib_send_create("});
        return lines.size() == 1 ? lines[0] : "no sender, or several";
    }
};

TEST_F(PluginObject, StartupAsksTheHostInOrderAndCreatesTheSenderLast)
{
    start_up();
    EXPECT_THAT(log.lines(), ElementsAre("getSPBasicSuite()", "AcquireSuite(Premiere Playmod Audio Suite, 4)",
                                         "AcquireSuite(Premiere PPix Suite, 1)", "AcquireSuite(Premiere Time Suite, 1)",
                                         "AcquireSuite(MediaCore App Info Suite, 3)", "GetAppInfo(0)",
                                         "Quillolib_send_create(Adobe Premiere Pro, null, 1, 1)"));
}

TEST_F(PluginObject, ShutdownDestroysTheSenderAndReleasesFiveSuitesInOrder)
{
    start_up();
    log.clear();
    functions.Shutdown(&parms);
    EXPECT_THAT(log.lines(),
                ElementsAre("Quillolib_send_destroy(sender)", "ReleaseSuite(Premiere Playmod Audio Suite, 4)",
                            "ReleaseSuite(Premiere PPix Suite, 1)", "ReleaseSuite(MediaCore Sequence Info Suite, 5)",
                            "ReleaseSuite(Premiere Threaded Work Suite, 3)", "ReleaseSuite(Premiere Time Suite, 1)"));
}

TEST_F(PluginObject, ANullSenderIsNotDestroyedAndTheSuitesAreReleasedAllTheSame)
{
    sender.refuses = true;
    start_up();
    EXPECT_NE(plugin_data(), nullptr);
    log.clear();
    functions.Shutdown(&parms);
    EXPECT_EQ(log.count("Quillolib_send_destroy"), 0u);
    EXPECT_THAT(log.lines(),
                ElementsAre("ReleaseSuite(Premiere Playmod Audio Suite, 4)", "ReleaseSuite(Premiere PPix Suite, 1)",
                            "ReleaseSuite(MediaCore Sequence Info Suite, 5)",
                            "ReleaseSuite(Premiere Threaded Work Suite, 3)", "ReleaseSuite(Premiere Time Suite, 1)"));
}

TEST_F(PluginObject, ANullSenderIsHandedToTheInstances)
{
    sender.refuses = true;
    create_instance();
    activate(false, false);
    EXPECT_THAT(log.lines(),
                ElementsAre("Quillolib_send_send_video(null, null)", "Quillolib_send_send_video(null, null)"));
}

TEST_F(PluginObject, WritesItsNameAndSixFlagsAndNothingElse)
{
    std::array<unsigned char, sizeof(tmPluginInfo) + 8> written;
    written.fill(0xAB);
    functions.Startup(&parms, reinterpret_cast<tmPluginInfo*>(written.data()));

    std::array<unsigned char, sizeof(tmPluginInfo) + 8> expected;
    expected.fill(0xAB);
    auto const put_one = [&](std::size_t offset) { std::memcpy(&expected[offset], "\1\0\0\0", 4); };
    for (std::size_t const flag : {41, 45, 49, 53, 57, 577})
        put_one(flag);
    std::memcpy(&expected[61], "Q\0u\0i\0l\0l\0o\0 \0o\0u\0t\0p\0u\0t\0\0\0", 28);

    for (std::size_t offset = 0; offset < written.size(); ++offset)
        EXPECT_EQ(written[offset], expected[offset]) << "at offset " << offset;
}

TEST_F(PluginObject, TheSourceIsNamedAfterTheHostApplication)
{
    struct
    {
        csSDK_uint32 code;
        char const* name;
    } const applications[] = {
        {0x5050726F, "Adobe Premiere Pro"},       {0x5072456C, "Adobe Premiere Elements"},
        {0x46585443, "Adobe After Effects"},      {0x414D4520, "Adobe Media Encoder"},
        {0x434F574F, "Adobe Cottonwood"},         {0x50524C44, "Adobe Prelude"},
        {0x53504744, "Adobe SpeedGrade"},         {0x41644175, "Adobe Audition"},
        {0x416E6D6C, "Adobe Character Animator"}, {0x00000000, "Adobe Application"},
        {0x6F725050, "Adobe Application"},        {0x50505250, "Adobe Application"},
    };
    for (auto const& application : applications)
        EXPECT_EQ(name_for(application.code),
                  std::string("Quillolib_send_create(") + application.name + ", null, 1, 1)");
}

TEST_F(PluginObject, MediaEncodersCodeEndsWithABlank)
{
    for (csSDK_uint32 last = 0; last < 256; ++last) {
        char const* const name = last == 0x20 ? "Adobe Media Encoder" : "Adobe Application";
        EXPECT_EQ(name_for(0x414D4500 | last), std::string("Quillolib_send_create(") + name + ", null, 1, 1)") << last;
    }
}

TEST_F(PluginObject, SetupOpensTheProductPage)
{
    start_up();
    log.clear();
    auto* const window = reinterpret_cast<prParentWnd>(&info);
    EXPECT_EQ(functions.SetupDialog(&parms, window), 0);
    EXPECT_EQ(functions.SetupDialog(&parms, nullptr), 0);
    EXPECT_THAT(module->take_commands(), ElementsAre("open " QUILLO_PRODUCT_PAGE, "open " QUILLO_PRODUCT_PAGE));
    EXPECT_THAT(log.lines(), testing::IsEmpty());
}

TEST_F(PluginObject, NeverAsksForAReset)
{
    start_up();
    prBool reset = 77;
    EXPECT_EQ(functions.NeedsReset(&parms, &reset), 0);
    EXPECT_EQ(reset, 77);
    EXPECT_EQ(functions.NeedsReset(&parms, nullptr), 0);
}

TEST_F(PluginObject, EveryInstanceIsItsOwn)
{
    start_up();
    create_instance();
    tmInstance second = a_sequence();
    EXPECT_EQ(functions.CreateInstance(&parms, &second), 0);
    void* const second_data = second.ioPrivateInstanceData;
    EXPECT_NE(second_data, instance_data());
    EXPECT_THAT(log.lines(), ElementsAre("GetTicksPerSecond()")); // one sender for all
    functions.DisposeInstance(&parms, &second);
}

} // namespace

} // namespace quillo::test
