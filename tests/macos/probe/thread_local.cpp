#include "tests/macos/probe/probe.h"

namespace {
thread_local int counter = 0;
}

int probe_constructed() { return ++counter; }
