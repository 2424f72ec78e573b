// What the user's configuration file says, with a working default for everything.
#pragma once

#include "publisher/config/key_file.h"
#include "publisher/doors/address_rules.h"
#include "publisher/log.h"

#include <chrono>
#include <stdexcept>
#include <string>
#include <vector>

namespace quillo::publisher {

struct configuration
{
    // [network]
    std::string address = "::"; // to listen at; "::" takes IPv4 too
    int port = 8554;            // the next free one is taken if this is not; 0: any
    address_rules allow;
    bool announce = true;

    // [access]: both or none
    std::string user;
    std::string password;

    // [tls]
    bool tls = false;
    int tls_port = 8322;     // instead of port
    std::string certificate; // PEM files; both empty: made by the publisher, for itself
    std::string key;

    // [limits]
    int raw_viewers = 16;     // of one source and mount
    int encoded_viewers = 64; // of one source
    int connections = 128;
    int connections_per_address = 64;
    int request_size = 65536; // bytes
    std::chrono::seconds request_time{30};

    // [sources]
    std::chrono::seconds slate{0}; // how long viewers are kept when the sender has gone; 0: they are ended

    // [page]
    bool page = true;
    int page_port = 8580;
    std::string page_address = "127.0.0.1";

    // [video]
    std::string encoder; // empty: the best that works

    // [process]
    int nice = 10; // how far hosts go before it

    // [log]
    log::level log_level = log::level::info;
    bool log_json = false;

    bool operator==(configuration const&) const = default;
};

// A file that cannot be used, with one line for each thing that is wrong: "FILE:LINE: what and what instead".
struct bad_configuration : std::runtime_error
{
    using std::runtime_error::runtime_error;
};

// $XDG_CONFIG_HOME/quillo/quillo.conf, else ~/.config/quillo/quillo.conf.
std::string default_configuration_file();

// Reads a file that must belong to the user, and to nobody else if there is a password in it. Throws bad_configuration.
configuration read_configuration(std::string const& file);

// Out of the file's text. Relative names of files are meant from the folder. Never repeats a password in a problem.
configuration configuration_from(std::string const& text, std::string const& folder,
                                 std::vector<file_problem>& problems);

} // namespace quillo::publisher
