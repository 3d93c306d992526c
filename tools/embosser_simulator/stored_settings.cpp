#include "stored_settings.h"

#include <cctype>
#include <cstring>

namespace embosser_sim {

namespace {

constexpr char kUel[] = "\x1b%-12345X";
constexpr size_t kUelLength = sizeof(kUel) - 1;
constexpr size_t kLoggedLineLength = 80;

enum class Form {
    Number,     // an unsigned decimal number (of `choices` only, when given)
    Word,       // one of `choices`
    TableName,  // a braille table name: 1 to 15 letters, digits or '_'; the reply quotes it
};

struct Setting {
    const char* key;
    Form form;
    const char* choices;  // separated by single blanks; null: any value of the form
};

// The settings the embosser takes through "@PJL DEFAULT", with the values it accepts.
constexpr Setting kSettings[] = {
    {"TOPMARGIN", Form::Number, nullptr},
    {"LEFTMARGIN", Form::Number, nullptr},
    {"RIGHTMARGIN", Form::Number, nullptr},
    {"BRAILLEDOTS", Form::Number, "6 8"},
    {"CHARSWIDTH", Form::Number, nullptr},
    {"LINESLENGTH", Form::Number, nullptr},
    {"EXTRALINESPACE", Form::Number, nullptr},
    {"PAPERWIDTH", Form::Number, nullptr},   // 1/720 inch
    {"PAPERLENGTH", Form::Number, nullptr},  // 1/720 inch
    {"OUTPUTFACE", Form::Number, "1 2"},
    {"CUSTOMMEDIAMIN", Form::Number, nullptr},
    {"CUSTOMMEDIAMAX", Form::Number, nullptr},
    {"PAPERSOURCE", Form::Number, nullptr},
    {"DRYTIME", Form::Number, nullptr},
    {"AUTOLOAD", Form::Number, "0 1"},
    {"AUTOCR", Form::Word, "ON OFF"},
    {"GRAPHICS", Form::Word, "ON OFF"},
    {"SPACING", Form::Word, "USLIBCONGRESS USNATLIB MICROBRAILLE KOREANBRAILLE JUMBOBRAILLE MARBURG"},
    {"MEDIATYPE", Form::Word,
     "BRAILLE LIGHTBRAILLE PLAIN PREMIUM CARDSTOCK CHINESE CUSTOM CUSTOM8 CUSTOM9 CUSTOM10 CUSTOM11 CUSTOM12 "
     "CUSTOM13 CUSTOM14 CUSTOM15 CUSTOM16"},
    {"BRAILLEFORCE", Form::Word, "HEAVY NORMAL LIGHT"},
    {"QUALITY", Form::Word, "DRAFT STANDARD BEST"},
    {"DUPLEXMODE", Form::Word, "SIMPLEX LONGEDGE SHORTEDGE"},
    {"BRAILLETABLE", Form::TableName, nullptr},
};

std::string Upper(std::string text) {
    for (char& c : text) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return text;
}

std::string Trimmed(const std::string& text) {
    const size_t first = text.find_first_not_of(" \t");
    if (first == std::string::npos) return std::string();
    return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

// A line as the log shows it: control bytes as \xNN, long lines cut.
std::string Printable(const std::string& line) {
    static const char kHex[] = "0123456789ABCDEF";
    std::string out;
    for (unsigned char c : line.substr(0, kLoggedLineLength)) {
        if (c >= 0x20 && c < 0x7F) {
            out += static_cast<char>(c);
        } else {
            out += "\\x";
            out += kHex[c >> 4];
            out += kHex[c & 15];
        }
    }
    return "\"" + out + "\"" + (line.size() > kLoggedLineLength ? "..." : "");
}

bool IsChoice(const char* choices, const std::string& value) {
    for (const char* start = choices; *start != '\0';) {
        const char* end = std::strchr(start, ' ');
        const size_t length = end != nullptr ? static_cast<size_t>(end - start) : std::strlen(start);
        if (value.size() == length && value.compare(0, length, start, length) == 0) return true;
        if (end == nullptr) break;
        start = end + 1;
    }
    return false;
}

bool IsUnsignedNumber(const std::string& value) {
    if (value.empty() || value.size() > 10) return false;
    for (char c : value) {
        if (c < '0' || c > '9') return false;
    }
    return std::stoull(value) <= 0xFFFFFFFFull;
}

bool IsTableName(const std::string& value) {
    if (value.empty() || value.size() > 15) return false;
    for (char c : value) {
        if (!std::isalnum(static_cast<unsigned char>(c)) && c != '_') return false;
    }
    return true;
}

const Setting* FindSetting(const std::string& key) {
    for (const Setting& setting : kSettings) {
        if (key == setting.key) return &setting;
    }
    return nullptr;
}

// The value as the reply spells it, or empty when the embosser refuses it (*why says why).
std::string AcceptedValue(const Setting& setting, const std::string& value, std::string* why) {
    switch (setting.form) {
        case Form::Number:
            if (!IsUnsignedNumber(value)) {
                *why = "not a number";
                return std::string();
            }
            if (setting.choices != nullptr && !IsChoice(setting.choices, std::to_string(std::stoull(value)))) {
                *why = "out of range";
                return std::string();
            }
            return std::to_string(std::stoull(value));
        case Form::Word: {
            const std::string word = Upper(value);
            if (!IsChoice(setting.choices, word)) {
                *why = "not a value of this setting";
                return std::string();
            }
            return word;
        }
        case Form::TableName:
            if (!IsTableName(value)) {
                *why = "not a braille table name";
                return std::string();
            }
            return "\"" + Upper(value) + "\"";
    }
    return std::string();
}

}  // namespace

std::vector<std::string> StoredSettings::TakeJob(const std::string& job, size_t cutAt) {
    std::vector<std::string> log;
    bool afterUel = false;
    for (size_t start = 0; start < job.size();) {
        const size_t newline = job.find('\n', start);
        if (newline == std::string::npos && cutAt != 0) {
            log.push_back("ignored, cut off: " + Printable(job.substr(start)));
            break;
        }
        const size_t end = newline == std::string::npos ? job.size() : newline;
        std::string line = job.substr(start, end - start);
        start = end + 1;
        if (!line.empty() && line.back() == '\r') line.pop_back();
        while (line.compare(0, kUelLength, kUel) == 0) {
            line.erase(0, kUelLength);
            afterUel = true;
        }
        if (line.empty()) continue;
        if (!afterUel) {
            log.push_back("ignored, no UEL before it: " + Printable(line));
        } else if (Upper(line.substr(0, 4)) != "@PJL" || (line.size() > 4 && line[4] != ' ' && line[4] != '\t')) {
            log.push_back("ignored, not PJL: " + Printable(line));
        } else {
            TakeCommand(Trimmed(line.substr(4)), line, &log);
        }
    }
    return log;
}

void StoredSettings::TakeCommand(const std::string& command, const std::string& line, std::vector<std::string>* log) {
    if (command.empty()) return;  // "@PJL" alone does nothing
    const std::string upper = Upper(command);
    if (upper.compare(0, 8, "DEFAULT ") == 0 || upper.compare(0, 8, "DEFAULT\t") == 0) {
        const std::string assignment = Trimmed(command.substr(8));
        const size_t equals = assignment.find('=');
        const std::string key = Upper(Trimmed(assignment.substr(0, equals)));
        const Setting* setting = equals == std::string::npos ? nullptr : FindSetting(key);
        if (setting == nullptr) {
            log->push_back("ignored, " + std::string(equals == std::string::npos ? "no KEY=VALUE" : "unknown setting") +
                           ": " + Printable(line));
            return;
        }
        std::string why;
        const std::string value = AcceptedValue(*setting, Trimmed(assignment.substr(equals + 1)), &why);
        if (value.empty()) {
            log->push_back("ignored, " + why + ": " + Printable(line));
            return;
        }
        for (auto& each : pending_) {
            if (each.first == key) {
                each.second = value;
                log->push_back("pending " + key + "=" + value);
                return;
            }
        }
        pending_.emplace_back(key, value);
        log->push_back("pending " + key + "=" + value);
    } else if (upper == "SERVICE UPDATE") {
        if (pending_.empty()) log->push_back("SERVICE UPDATE: nothing pending");
        for (const auto& [key, value] : pending_) {
            WriteIntoReply(key, value);
            log->push_back("committed " + key + "=" + value);
        }
        pending_.clear();
    } else if (upper == "SERVICE MEDIAFORCE") {
        log->push_back("printed the media type test pattern");
    } else {
        log->push_back("ignored, unknown command: " + Printable(line));
    }
}

void StoredSettings::WriteIntoReply(const std::string& key, const std::string& value) {
    size_t body = 0;
    if (reply_.compare(0, 5, "HTTP/") == 0) {
        const size_t headEnd = reply_.find("\r\n\r\n");
        body = headEnd == std::string::npos ? reply_.size() : headEnd + 4;
    }
    bool written = false;
    for (size_t start = body; start < reply_.size() && !written;) {
        const size_t newline = reply_.find('\n', start);
        size_t end = newline == std::string::npos ? reply_.size() : newline;
        if (end > start && reply_[end - 1] == '\r') --end;
        if (reply_.compare(start, key.size() + 1, key + "=") == 0) {
            reply_.replace(start + key.size() + 1, end - (start + key.size() + 1), value);
            written = true;
        }
        if (newline == std::string::npos) break;
        start = newline + 1;
    }
    if (!written) {
        if (reply_.size() > body && reply_.back() != '\n') reply_ += "\r\n";
        reply_ += key + "=" + value + "\r\n";
    }
    // A head that gives the body's length must go on telling the truth (the head lies
    // before `body`, so the body's start has not moved).
    const size_t length = reply_.find("Content-Length:");
    if (length < body) {
        const size_t digits = reply_.find_first_not_of(' ', length + 15);
        const size_t digitsEnd = reply_.find_first_not_of("0123456789", digits);
        reply_.replace(digits, digitsEnd - digits, std::to_string(reply_.size() - body));
    }
}

}  // namespace embosser_sim
