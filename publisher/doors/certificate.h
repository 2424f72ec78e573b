// The certificate under which the publisher speaks TLS.
#pragma once

#include "publisher/gst_ptr.h"

#include <memory>
#include <string>

namespace quillo::publisher {

// From PEM files. Throws std::runtime_error.
std::shared_ptr<GTlsCertificate> read_certificate(std::string const& certificate_file, std::string const& key_file);

// The publisher's own, signed by itself, for this machine's name: made in the folder on first use and kept there, so
// that receivers can know it again. Throws std::runtime_error.
std::shared_ptr<GTlsCertificate> own_certificate(std::string const& folder);

// $XDG_DATA_HOME/quillo, else ~/.local/share/quillo.
std::string own_certificate_folder();

// SHA-256 as "AB:CD:...".
std::string fingerprint(GTlsCertificate* of);

} // namespace quillo::publisher
