#include "core/agents/spend/model_pricing.h"

#include <array>
#include <initializer_list>

namespace tarvik::ModelPricing {
namespace {

struct Family {
    std::initializer_list<const char*> names;
    ModelPrice price;
};

// First match wins, so a newer model comes before the family name that also contains it
// ("opus-4-5" before "opus-4").
const std::array<Family, 6> kClaude = {{
    {{"opus-4-5"}, {5.00, 25.00, 6.25, 0.50}},
    {{"opus-4", "3-opus"}, {15.00, 75.00, 18.75, 1.50}},
    {{"sonnet-4", "3-7-sonnet", "3-5-sonnet"}, {3.00, 15.00, 3.75, 0.30}},
    {{"haiku-4-5"}, {1.00, 5.00, 1.25, 0.10}},
    {{"3-5-haiku"}, {0.80, 4.00, 1.00, 0.08}},
    {{"3-haiku"}, {0.25, 1.25, 0.30, 0.03}},
}};

// OpenAI bills no cache writes.
const std::array<Family, 3> kGPT = {{
    {{"gpt-5", "gpt-5-codex", "gpt-5.1", "gpt-5.1-codex"}, {1.25, 10.00, 0, 0.125}},
    {{"gpt-5-mini", "gpt-5.1-codex-mini"}, {0.25, 2.00, 0, 0.025}},
    {{"gpt-5-nano"}, {0.05, 0.40, 0, 0.005}},
}};

} // namespace

std::optional<ModelPrice> price(const QString& model) {
    const QString name = model.trimmed().toLower();
    for (const Family& f : kClaude) {
        for (const char* n : f.names) {
            if (name.contains(QLatin1String(n))) {
                return f.price;
            }
        }
    }
    for (const Family& f : kGPT) {
        for (const char* n : f.names) {
            if (name == QLatin1String(n)) {
                return f.price;
            }
        }
    }
    return std::nullopt;
}

} // namespace tarvik::ModelPricing
