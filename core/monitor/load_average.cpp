#include "core/monitor/load_average.h"

#include <array>
#include <charconv>

namespace tarvik {

std::optional<LoadAverage> parseLoadAverage(std::string_view text) {
    std::array<double, 3> v{};
    for (double& value : v) {
        const auto begin = text.find_first_not_of(' ');
        if (begin == std::string_view::npos) {
            return std::nullopt;
        }
        text.remove_prefix(begin);
        const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), value);
        if (ec != std::errc{} || value < 0) {
            return std::nullopt;
        }
        text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    }
    return LoadAverage{v[0], v[1], v[2]};
}

} // namespace tarvik
