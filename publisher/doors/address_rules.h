// Who may knock: a list of address ranges.
#pragma once

#include "publisher/gst_ptr.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quillo::publisher {

class address_rules
{
  public:
    static constexpr char const* allowed_words = "near, any, loopback, private, link-local, or addresses and ranges "
                                                 "such as 10.1.0.0/16, fd00::/8, 203.0.113.7, with commas between them";

    // "near": loopback, private and link-local addresses, which is everything without a router to the world.
    address_rules();

    // Null for what is no such list.
    static std::optional<address_rules> parse(std::string_view list);

    // IPv4 addresses that come in IPv6 clothes count as IPv4.
    bool allow(GInetAddress* address) const;
    bool allow(std::string const& address) const; // what is no address is not allowed

    // For the log: as written.
    std::string const& text() const { return text_; }
    bool operator==(address_rules const& other) const { return text_ == other.text_; }

  private:
    bool add(std::string_view word);

    std::string text_;
    std::vector<std::shared_ptr<GInetAddressMask>> ranges_;
};

} // namespace quillo::publisher
