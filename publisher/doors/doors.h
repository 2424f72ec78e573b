// Who may come in, how many, and how long one may stand there without a word. Connections are watched from the moment
// they are accepted; those that go on for too long or talk too much are shut.
#pragma once

#include "publisher/doors/address_rules.h"
#include "publisher/gst_ptr.h"

#include <chrono>
#include <cstdint>
#include <mutex>
#include <string>
#include <vector>

namespace quillo::publisher {

struct door_settings
{
    address_rules allow{};
    std::size_t connections = 128;
    std::size_t connections_per_address = 64;
    std::uint64_t request_size = 65536;    // bytes that may come without a whole request among them
    std::chrono::seconds request_time{30}; // for the first request, and between those before pictures flow
};

// How many were turned away, since the start.
struct door_counts
{
    std::uint64_t strangers = 0; // by their address
    std::uint64_t too_many = 0;
    std::uint64_t silent = 0;
    std::uint64_t oversized = 0;
    std::uint64_t wrong_password = 0;
    std::uint64_t locked_out = 0;
};

// Thread-safe. Holds no connection: sockets are known as long as somebody else holds them.
class doors
{
  public:
    using steady = std::chrono::steady_clock;

    static constexpr int tries =
        10; // wrong passwords from one address within a minute, before it is locked out for one
    static constexpr std::chrono::seconds lock_time{60};

    explicit doors(door_settings settings) : settings_(std::move(settings)) {}
    doors(doors const&) = delete;
    doors& operator=(doors const&) = delete;

    // For those who come from now on.
    void set(door_settings settings);

    // A connection has just been accepted: whether it may stay.
    bool admit(GSocket* connection);

    // A whole request has come on it. An address is forgiven its wrong passwords when a right one comes.
    void heard(GSocket* connection, bool plays);
    void wrong_password(GSocket* connection);
    void right_password(GSocket* connection);

    // To be called about once a second.
    void look_around(steady::time_point now);

    // Whoever is still there has to go.
    void shut_all();

    door_counts counts() const;

  private:
    struct visitor
    {
        weak_object<GSocket> socket;
        std::string address;
        steady::time_point last_request = steady::now();
        std::uint64_t bytes = 0; // received until the last request or look
        bool plays = false;
    };
    struct suspect
    {
        std::string address;
        int wrong = 0;
        steady::time_point last;
    };

    visitor* find(GSocket* connection);
    suspect* suspected(std::string const& address, steady::time_point now);
    void forget_gone();

    mutable std::mutex mutex_; // of everything below
    door_settings settings_;
    door_counts counts_;
    std::vector<visitor> visitors_;
    std::vector<suspect> suspects_;
};

// The settings' part of a configuration.
struct configuration;
door_settings door_settings_of(configuration const& from);

} // namespace quillo::publisher
