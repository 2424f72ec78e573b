#include "publisher/slow_receiver.h"

#include <cmath>

namespace quillo::publisher {

namespace {

std::string rounded(double value) { return std::to_string(std::llround(value)); }

std::string cause_and_remedy(delivery const& from, delivery const& to, bool compressed)
{
    // Its window was shut for most of the time: the network would have carried more.
    if ((to.waits - from.waits) * 2 > to.busy - from.busy)
        return std::string{"it does not read quickly enough; its computer or program is busy"} +
               (compressed ? "" : ", the compressed mount asks less of it");
    double const seconds = std::chrono::duration<double>(to.at - from.at).count();
    return "the network to it carries " +
           rounded(static_cast<double>(to.acknowledged - from.acknowledged) * 8e-6 / seconds) + " Mb/s and no more; " +
           (compressed ? "a wire instead of radio, or less traffic beside it, would help"
                       : "the compressed mount, or a faster network, would help");
}

} // namespace

std::optional<std::string> slow_receiver::look(delivery const& now, bool compressed)
{
    if (!before_)
        before_ = now;
    if (now.at - before_->at < looks_back)
        return std::nullopt;
    auto const from = *before_;
    before_ = now;
    auto const dropped = now.dropped - from.dropped;
    auto const all = now.pictures - from.pictures + dropped;
    if (dropped * 100 < all * percent || dropped == 0)
        return std::nullopt;
    if (said_ && now.at - *said_ < says_again_after)
        return std::nullopt;
    said_ = now.at;
    return "lost " + std::to_string(dropped) + " of " + std::to_string(all) + " pictures in " +
           rounded(std::chrono::duration<double>(now.at - from.at).count()) +
           " s: " + cause_and_remedy(from, now, compressed);
}

} // namespace quillo::publisher
