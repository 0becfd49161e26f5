#pragma once

#include <QString>
#include <optional>

namespace tarvik {

// List prices in US dollars per million tokens.
struct ModelPrice {
    double input = 0;
    double output = 0;
    double cacheWrite = 0;
    double cacheRead = 0;
};

namespace ModelPricing {

// The price of a Claude or GPT model as the agents name it in their logs, in any letter case.
// Claude names match by family ("claude-sonnet-4-5-20250929" is a Sonnet 4); GPT names must
// match exactly, since their suffixes ("-high") aren't models of their own. None when unknown.
std::optional<ModelPrice> price(const QString& model);

} // namespace ModelPricing
} // namespace tarvik
