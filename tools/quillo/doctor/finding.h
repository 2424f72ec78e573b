// What the doctor looks at, and what it finds.
#pragma once

#include "publisher/config/configuration.h"

#include <string>
#include <vector>

namespace quillo::doctor {

enum class state {
    good,
    note, // works, but somebody may wonder
    bad   // does not work
};

struct finding
{
    std::string check;
    state how;
    std::string what;
    std::string remedy; // empty: nothing to do
};

using findings = std::vector<finding>;

// Of this machine: rights, files, addresses, ports, time.
findings configuration_file(publisher::configuration& read);
findings folder();
findings shared_memory();
findings running_publisher(publisher::configuration const& from);
findings ports(publisher::configuration const& from);
findings firewall(publisher::configuration const& from);
findings interfaces(publisher::configuration const& from);
findings names_on_the_network(publisher::configuration const& from);
findings clock();

// Of what turns pictures into streams. After gst_init.
findings plug_ins();
findings encoder(publisher::configuration const& from);

// Everything at once: a host that plays the test pattern, a publisher, and a receiver, all on this machine.
findings loop();

} // namespace quillo::doctor
