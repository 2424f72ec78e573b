// Anything at all to the page's server, over a connection as strangers make it.
#include "publisher/log.h"
#include "publisher/page/http_server.h"
#include "tests/fuzz/stranger.h"

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size);

namespace {

using namespace quillo::publisher;

struct served
{
    served()
    {
        quillo::log::set_level(quillo::log::level::error);
        http_settings settings;
        settings.port = 0;
        settings.max_connections = 10000;
        loop.call([&] {
            http = std::make_unique<http_server>(
                loop.context(), settings,
                http_server::handlers{[](SoupServerMessage* request, std::string const&) {
                                          soup_server_message_set_status(request, SOUP_STATUS_NO_CONTENT, nullptr);
                                      },
                                      [](SoupServerMessage*, SoupWebsocketConnection*) {}, "/socket"});
        });
    }

    loop_thread loop;
    std::unique_ptr<http_server> http;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    static served* const server = new served;
    quillo::fuzz::say(server->http->port(), data, size, 100);
    return 0;
}
