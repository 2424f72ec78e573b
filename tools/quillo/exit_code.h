// What the quillo command ends with.
#pragma once

namespace quillo {

// Exit codes of every subcommand, listed at the end of each --help.
enum exit_code : int {
    exit_ok = 0,
    exit_failure = 1,      // something went wrong on the way; the message says what
    exit_usage = 2,        // the command line was not understood
    exit_input = 3,        // the input cannot be read
    exit_no_video = 4,     // the input has no video
    exit_module = 5,       // the plug-in module, or its entry, cannot be loaded
    exit_unavailable = 6,  // nobody answers: no publisher, no network
    exit_interrupted = 130 // ended by Ctrl-C before its job was done
};

} // namespace quillo
