#include "cli/Json.h"

#include <nlohmann/json.hpp>
#include <utility>

#include "cli/Console.h"
#include "text/Text.h"

namespace velloran::cli {

using Library = nlohmann::ordered_json;

struct Json::Value {
    Library json;
};

Json::Json() : value_(std::make_unique<Value>()) {}
Json::Json(bool value) : value_(new Value{Library(value)}) {}
Json::Json(int value) : value_(new Value{Library(value)}) {}
Json::Json(std::int64_t value) : value_(new Value{Library(value)}) {}
Json::Json(std::size_t value) : value_(new Value{Library(value)}) {}
Json::Json(double value) : value_(new Value{Library(value)}) {}
Json::Json(std::string_view text) : value_(new Value{Library(std::string(text))}) {}
Json::Json(const char* text) : Json(std::string_view(text)) {}
Json::Json(const std::string& text) : Json(std::string_view(text)) {}
Json::Json(std::u16string_view text) : Json(ToUtf8(text)) {}

Json Json::Array() {
    Json json;
    json.value_->json = Library::array();
    return json;
}

Json Json::Object() {
    Json json;
    json.value_->json = Library::object();
    return json;
}

Json::Json(const Json& other) : value_(std::make_unique<Value>(*other.value_)) {}
Json::Json(Json&& other) noexcept = default;
Json& Json::operator=(Json other) noexcept {
    value_.swap(other.value_);
    return *this;
}
Json::~Json() = default;

Json& Json::Add(std::string_view key, const Json& value) {
    value_->json[std::string(key)] = value.value_->json;
    return *this;
}

Json& Json::AddPath(std::string_view path) {
    Add("path", path);
    if (!IsUtf8(path))
        Add("pathBytes", PercentBytes(path));
    return *this;
}

Json& Json::Append(const Json& value) {
    value_->json.push_back(value.value_->json);
    return *this;
}

std::string Json::Text() const {
    return value_->json.dump(2, ' ', /*ensure_ascii=*/false, Library::error_handler_t::replace);
}

void PrintJson(const Json& json) {
    Print(json.Text() + "\n");
}

std::string PercentBytes(std::string_view name) {
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    std::string text;
    for (const char c : name) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte >= 0x20 && byte < 0x7F && c != '%')
            text += c;
        else
            text.append({'%', kDigits[byte >> 4], kDigits[byte & 15]});
    }
    return text;
}

}  // namespace velloran::cli
