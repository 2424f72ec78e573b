#include "tools/quillo/command.h"

#include <exception>
#include <iostream>

int main(int argc, char** argv)
{
    CLI::App app{"Quillo Transmit: live sources on the local network, from a host application or a media file."};
    app.name("quillo");
    app.set_version_flag("--version", "quillo " QUILLO_VERSION);
    app.require_subcommand(1);
    app.footer("Exit codes: 0 done, 1 failed, 2 command line not understood, 3 input cannot be read,\n"
               "4 no video in the input, 5 plug-in module cannot be loaded, 6 nobody answers, 130 interrupted.");

    int exit_code = quillo::exit_ok;
    quillo::add_convert(app, exit_code);
    quillo::add_play(app, exit_code);
    quillo::add_sdkfile(app, exit_code);
    quillo::add_serve(app, exit_code);
    quillo::add_list(app, exit_code);
    quillo::add_doctor(app, exit_code);

    try {
        app.parse(argc, argv);
    } catch (CLI::ParseError const& error) {
        return app.exit(error) == 0 ? quillo::exit_ok : quillo::exit_usage;
    } catch (std::exception const& error) {
        std::cerr << "quillo: " << error.what() << '\n';
        return quillo::exit_failure;
    }
    return exit_code;
}
