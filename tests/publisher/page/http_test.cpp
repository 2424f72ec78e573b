// The HTTP server by itself: what it answers to whom, and what it bears.
#include "publisher/page/http_server.h"
#include "tests/publisher/page/http_client.h"
#include "tests/support/soon.h"

#include <gmock/gmock.h>
#include <sys/socket.h>

#include <list>
#include <thread>

namespace quillo::publisher {
namespace {

using namespace std::chrono_literals;
using testing::get;
using ::testing::HasSubstr;
using testing::http_client;
using testing::parse_response;
using testing::soon;

struct served
{
    explicit served(http_settings settings = {})
    {
        settings.port = 0;
        loop.call([&] {
            http = std::make_unique<http_server>(
                loop.context(), settings,
                http_server::handlers{[](SoupServerMessage* request, std::string const& path) {
                                          if (path == "/here")
                                              answer(request, SOUP_STATUS_OK, "text/plain", "hello");
                                          else
                                              answer(request, SOUP_STATUS_NOT_FOUND, "text/plain", "no");
                                      },
                                      [](SoupServerMessage*, SoupWebsocketConnection*) {}, "/socket"});
        });
    }
    ~served()
    {
        loop.call([&] { http.reset(); });
    }

    int port() const { return http->port(); }
    std::size_t connections()
    {
        std::size_t count = 0;
        loop.call([&] { count = http->connections(); });
        return count;
    }

    loop_thread loop;
    std::unique_ptr<http_server> http;
};

TEST(http, answers_a_request_and_closes)
{
    served server;
    auto const response = get(server.port(), "/here");
    EXPECT_EQ(response.status, 200);
    EXPECT_EQ(response.body, "hello");
    EXPECT_EQ(response.headers.at("connection"), "close");
    EXPECT_EQ(response.headers.at("content-length"), "5");
    EXPECT_EQ(response.headers.at("x-content-type-options"), "nosniff");
    EXPECT_THAT(response.headers.at("server"), HasSubstr(QUILLO_VERSION));
}

TEST(http, is_there_for_both_kinds_of_localhost)
{
    served server;
    http_client client{server.port(), "::1"};
    client.send("GET /here HTTP/1.1\r\nHost: [::1]:1\r\n\r\n");
    EXPECT_EQ(parse_response(client.receive()).status, 200);
}

TEST(http, head_has_no_body)
{
    served server;
    auto const response = get(server.port(), "/here", {}, "HEAD");
    EXPECT_EQ(response.status, 200);
    EXPECT_EQ(response.headers.at("content-length"), "5");
    EXPECT_EQ(response.body, "");
}

TEST(http, what_is_not_there_is_not_found)
{
    served server;
    for (char const* const path : {"/", "/there", "/here/", "//here"})
        EXPECT_EQ(get(server.port(), path).status, 404) << path;
    for (char const* const path : {"/%00", "/here%2f.."})
        EXPECT_EQ(get(server.port(), path).status, 400) << path;
}

TEST(http, only_get_and_head)
{
    served server;
    for (char const* const method : {"POST", "PUT", "DELETE", "OPTIONS", "TRACE", "PATCH", "RUBBISH"}) {
        auto const response = get(server.port(), "/here", "Content-Length: 0\r\n", method);
        EXPECT_EQ(response.status, 405) << method;
        EXPECT_EQ(response.headers.at("allow"), "GET, HEAD") << method;
    }
}

TEST(http, foreign_host_names_are_refused)
{
    served server;
    for (char const* const host : {"example.com", "example.com:8580", "localhost.example.com", "192.0.2.77"}) {
        auto const response = get(server.port(), "/here", {}, "GET", host);
        EXPECT_EQ(response.status, 403) << host;
        EXPECT_THAT(response.body, ::testing::Not(HasSubstr("hello")));
    }
    http_client without{server.port()};
    without.send("GET /here HTTP/1.1\r\n\r\n");
    EXPECT_EQ(parse_response(without.receive()).status, 400);
    http_client old{server.port()};
    old.send("GET /here HTTP/1.0\r\n\r\n");
    EXPECT_EQ(parse_response(old.receive()).status, 403);
    http_client twice{server.port()};
    twice.send("GET /here HTTP/1.1\r\nHost: localhost\r\nHost: example.com\r\n\r\n");
    EXPECT_NE(parse_response(twice.receive()).status, 200);
}

TEST(http, other_pages_are_refused)
{
    served server;
    EXPECT_EQ(get(server.port(), "/here", "Origin: http://example.com\r\n").status, 403);
    EXPECT_EQ(get(server.port(), "/here", "Origin: null\r\n").status, 403);
    EXPECT_EQ(get(server.port(), "/here", "Sec-Fetch-Site: cross-site\r\nSec-Fetch-Mode: no-cors\r\n").status, 403);
    EXPECT_EQ(get(server.port(), "/here", "Sec-Fetch-Site: cross-site\r\nSec-Fetch-Mode: navigate\r\n").status, 200);
    EXPECT_EQ(get(server.port(), "/here", "Origin: http://localhost:" + std::to_string(server.port()) + "\r\n").status,
              200);
    std::string const upgrade = "Upgrade: websocket\r\nConnection: Upgrade\r\nSec-WebSocket-Version: 13\r\n"
                                "Sec-WebSocket-Key: dGhlIHNhbXBsZSBub25jZQ==\r\n";
    EXPECT_EQ(get(server.port(), "/socket", upgrade + "Origin: http://example.com\r\n").status, 403);
    EXPECT_EQ(get(server.port(), "/socket").status, 400);
}

TEST(http, a_body_is_thrown_away_and_a_long_one_not_even_read)
{
    served server;
    auto const response = get(server.port(), "/here", "Content-Length: 5\r\n\r\nhello", "POST");
    EXPECT_EQ(response.status, 405);

    http_client announced{server.port()};
    announced.send("POST /here HTTP/1.1\r\nHost: localhost\r\nContent-Length: 10000000000\r\n\r\n");
    EXPECT_TRUE(announced.closes_silently());
    http_client endless{server.port()};
    endless.send("POST /here HTTP/1.1\r\nHost: localhost\r\nTransfer-Encoding: chunked\r\n\r\n5\r\nhello\r\n");
    EXPECT_EQ(endless.receive().find("hello"), std::string::npos);
    EXPECT_TRUE(endless.closes_silently());
    http_client polite{server.port()};
    polite.send(
        "POST /here HTTP/1.1\r\nHost: localhost\r\nContent-Length: 10000000000\r\nExpect: 100-continue\r\n\r\n");
    EXPECT_EQ(parse_response(polite.receive()).status, 413);
    EXPECT_EQ(get(server.port(), "/here").status, 200);
}

TEST(http, headers_have_an_end)
{
    served server;
    http_client client{server.port()};
    client.send("GET /here HTTP/1.1\r\nHost: localhost\r\n");
    std::string const line = "X-Long: " + std::string(8000, 'x') + "\r\n";
    int sent = 0;
    while (sent < 1000 && client.send(line))
        ++sent;
    EXPECT_LT(sent, 1000) << "8 MB of headers were taken";
}

TEST(http, rubbish_harms_nobody)
{
    served server;
    for (std::string const& rubbish :
         {std::string{"\r\n\r\n"}, std::string(5000, '\0'), std::string{"GET\r\n\r\n"},
          std::string{"GET / HTTP/9.9\r\n\r\n"}, std::string{"\x16\x03\x01\x02\x00\x01\x00\x01\xfc\x03\x03", 11},
          std::string{"GET http:// HTTP/1.1\r\nHost: \r\n\r\n"},
          std::string{"GET / HTTP/1.1\r\nHost: localhost\r\nContent-Length: -1\r\n\r\n"}}) {
        http_client client{server.port()};
        client.send(rubbish);
        ::shutdown(client.fd(), SHUT_WR);
        EXPECT_EQ(client.receive().find("hello"), std::string::npos);
    }
    EXPECT_EQ(get(server.port(), "/here").status, 200);
}

TEST(http, who_says_nothing_or_too_little_is_closed_in_time)
{
    http_settings settings;
    settings.request_time = 300ms;
    served server{settings};
    http_client silent{server.port()};
    http_client half{server.port()};
    half.send("GET /here HTTP/1.1\r\nHost: loc");
    // A byte now and then does not help.
    http_client slow{server.port()};
    auto const began = std::chrono::steady_clock::now();
    std::string_view rest = "GET /here HTTP/1.1\r\nHost: localhost\r\nX-A: aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa";
    while (!rest.empty() && slow.send(rest.substr(0, 1)) && !slow.closes_silently(20ms))
        rest.remove_prefix(1);
    EXPECT_FALSE(rest.empty());
    EXPECT_LT(std::chrono::steady_clock::now() - began, 3s);
    EXPECT_TRUE(silent.closes_silently());
    EXPECT_TRUE(half.closes_silently());
    EXPECT_EQ(get(server.port(), "/here").status, 200);
}

TEST(http, has_room_for_so_many_connections)
{
    http_settings settings;
    settings.max_connections = 5;
    served server{settings};
    std::list<http_client> held;
    for (int k = 0; k < 5; ++k)
        held.emplace_back(server.port());
    ASSERT_TRUE(soon([&] { return server.connections() == 5; }));
    http_client more{server.port()};
    EXPECT_TRUE(more.closes_silently());
    held.clear();
    ASSERT_TRUE(soon([&] { return server.connections() == 0; }));
    EXPECT_EQ(get(server.port(), "/here").status, 200);
}

TEST(http, who_comes_in_a_crowd_does_not_wait)
{
    served server;
    std::list<http_client> crowd;
    std::chrono::steady_clock::duration took{};
    server.loop.call([&] {
        // Nobody is taken meanwhile.
        auto const began = std::chrono::steady_clock::now();
        for (int k = 0; k < 60; ++k)
            crowd.emplace_back(server.port());
        took = std::chrono::steady_clock::now() - began;
    });
    EXPECT_LT(took, 900ms);
    EXPECT_TRUE(soon([&] { return server.connections() == 60; }));
}

TEST(http, the_next_free_port_is_taken)
{
    served first;
    loop_thread loop;
    std::unique_ptr<http_server> second;
    loop.call([&] {
        http_settings settings;
        settings.port = first.port();
        second = std::make_unique<http_server>(loop.context(), settings, http_server::handlers{{}, {}, "/socket"});
    });
    EXPECT_GT(second->port(), first.port());
    EXPECT_LT(second->port(), first.port() + http_server::ports_to_try);
    loop.call([&] { second.reset(); });
}

TEST(http, a_password_is_asked_for_before_anything_is_told)
{
    http_settings settings;
    settings.user = "operator";
    settings.password = "on air";
    served server{settings};
    auto const refused = get(server.port(), "/here");
    EXPECT_EQ(refused.status, 401);
    EXPECT_THAT(refused.headers.at("www-authenticate"), HasSubstr("Digest"));
    EXPECT_EQ(refused.body.find("hello"), std::string::npos);
    EXPECT_EQ(get(server.port(), "/there").status, 401);
    EXPECT_EQ(get(server.port(), "/here", {}, "GET", "example.com").status, 403);

    auto const ask = [&](char const* password, int& status) {
        auto const session = adopt<object_ptr<SoupSession>>(soup_session_new());
        auto const message = adopt<object_ptr<SoupMessage>>(
            soup_message_new("GET", ("http://127.0.0.1:" + std::to_string(server.port()) + "/here").c_str()));
        auto const on_asked = +[](SoupMessage*, SoupAuth* auth, gboolean again, gpointer word) -> gboolean {
            if (!again)
                soup_auth_authenticate(auth, "operator", static_cast<char const*>(word));
            return !again;
        };
        g_signal_connect(message.get(), "authenticate", G_CALLBACK(on_asked), const_cast<char*>(password));
        g_bytes_unref(soup_session_send_and_read(session.get(), message.get(), nullptr, nullptr));
        status = static_cast<int>(soup_message_get_status(message.get()));
    };
    int status = 0;
    ask("on air", status);
    EXPECT_EQ(status, 200);
    ask("off air", status);
    EXPECT_EQ(status, 401);
}

TEST(http, addresses_that_are_not_allowed_get_nothing)
{
    http_settings settings;
    settings.is_allowed = [](std::string const& address) { return address != "127.0.0.1"; };
    served server{settings};
    EXPECT_TRUE(http_client{server.port()}.closes_silently());
    http_client other{server.port(), "::1"};
    other.send("GET /here HTTP/1.1\r\nHost: localhost\r\n\r\n");
    EXPECT_EQ(parse_response(other.receive()).status, 200);
}

} // namespace
} // namespace quillo::publisher
