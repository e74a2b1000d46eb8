#include "korvexctl/cli/Figures.h"

#include <nlohmann/json.hpp>
#include <utility>

namespace Korvex3Sync::korvexctl {

Figures::Figures() : m_value(std::make_unique<nlohmann::json>()) {}

Figures::Figures(nlohmann::json value)
    : m_value(std::make_unique<nlohmann::json>(std::move(value))) {}

Figures::Figures(const Figures& other) : Figures(*other) {}

Figures::Figures(Figures&& other) noexcept = default;

Figures& Figures::operator=(const Figures& other) {
    m_value = std::make_unique<nlohmann::json>(*other);
    return *this;
}

Figures& Figures::operator=(Figures&& other) noexcept = default;

Figures::~Figures() = default;

nlohmann::json& Figures::operator[](const char* key) {
    return (*m_value)[key];
}

const nlohmann::json& Figures::operator[](const char* key) const {
    return std::as_const(*m_value)[key];
}

bool Figures::operator==(const Figures& other) const {
    return *m_value == *other;
}

}  // namespace Korvex3Sync::korvexctl
