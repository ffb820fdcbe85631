// A small JSON reader for the simulator's request log (one object per line).
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace e2e {

struct JsonValue {
    enum class Type { Null, Bool, Number, String, Array, Object };
    Type type = Type::Null;
    bool boolean = false;
    double number = 0;
    std::string text;
    std::vector<JsonValue> items;
    std::map<std::string, JsonValue> members;

    // Member access that yields a Null value for a missing key.
    const JsonValue& operator[](const std::string& key) const;
    const JsonValue& operator[](size_t index) const;
    bool has(const std::string& key) const { return members.count(key) != 0; }
};

// Parses one JSON text; false when it is not valid JSON.
bool parseJson(const std::string& text, JsonValue& value);

}  // namespace e2e
