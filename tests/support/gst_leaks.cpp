// What GLib keeps for the life of the process and hides from the leak check: its table of interned strings, which it
// replaces when it grows; the first one is made while the loader starts GLib, and is known by the loader's file, as the
// names inside are there on some machines only. The texts of RTSP's answers, a table that two threads of GStreamer may
// make at once. And what libsoup 3.2 forgets, and later ones do not: the path of a request whose transfer encoding it
// does not know.
extern "C" {

char const* __lsan_default_options();
char const* __lsan_default_suppressions();
char const* __asan_default_options();

char const* __lsan_default_suppressions()
{
    return "leak:g_intern_string\nleak:g_intern_static_string\nleak:g_quark_from\nleak:ld-linux\n"
           "leak:gst_rtsp_status_as_text\nleak:soup_headers_parse_request\n";
}

// What was suppressed would stand among what a program has to say.
char const* __lsan_default_options() { return "print_suppressions=0"; }

// GLib is built without frame pointers. To look for every caller of every allocation takes longer than all else; ten
// of them show the names above.
char const* __asan_default_options() { return "fast_unwind_on_malloc=0:malloc_context_size=10"; }
}
