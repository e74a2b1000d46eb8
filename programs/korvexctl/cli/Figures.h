#pragma once

#include <memory>
#include <nlohmann/json_fwd.hpp>

namespace Korvex3Sync::korvexctl {

/// A JSON value, null at first. Only files that look into it include <nlohmann/json.hpp>. One that
/// was moved from may only be assigned to or destroyed.
class Figures {
public:
    Figures();
    explicit Figures(nlohmann::json value);
    Figures(const Figures& other);
    Figures(Figures&& other) noexcept;
    Figures& operator=(const Figures& other);
    Figures& operator=(Figures&& other) noexcept;
    ~Figures();

    nlohmann::json& operator*() { return *m_value; }
    const nlohmann::json& operator*() const { return *m_value; }
    nlohmann::json* operator->() { return m_value.get(); }
    const nlohmann::json* operator->() const { return m_value.get(); }
    /// The member of an object; a null value becomes an object.
    nlohmann::json& operator[](const char* key);
    /// The member of an object, which must be there.
    const nlohmann::json& operator[](const char* key) const;

    bool operator==(const Figures& other) const;

private:
    std::unique_ptr<nlohmann::json> m_value;
};

}  // namespace Korvex3Sync::korvexctl
