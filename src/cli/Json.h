#pragma once

// The --json forms, without the library that writes them: keys in the order of their writing,
// UTF-8.

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace velloran::cli {

/// A value of a JSON text. Text that is no UTF-8 gets U+FFFD.
class Json {
 public:
    Json();  // null
    Json(bool value);
    Json(int value);
    Json(std::int64_t value);
    Json(std::size_t value);
    Json(double value);
    Json(std::string_view text);
    Json(const char* text);
    Json(const std::string& text);
    Json(std::u16string_view text);
    static Json Array();
    static Json Object();

    Json(const Json& other);
    Json(Json&& other) noexcept;
    Json& operator=(Json other) noexcept;
    ~Json();

    /// A key behind those there are, of an object.
    Json& Add(std::string_view key, const Json& value);
    /// "path", and beside it "pathBytes" where the name is no UTF-8: its bytes, those that are no
    /// printable ASCII, and %, as %XX.
    Json& AddPath(std::string_view path);
    /// A further value, of an array.
    Json& Append(const Json& value);

    /// Indented by two.
    std::string Text() const;

 private:
    struct Value;
    std::unique_ptr<Value> value_;
};

/// To standard output, with a line feed.
void PrintJson(const Json& json);

/// The bytes of a name as %XX where they are no printable ASCII, and % itself.
std::string PercentBytes(std::string_view name);

}  // namespace velloran::cli
