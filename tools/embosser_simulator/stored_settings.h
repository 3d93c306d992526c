// What a network embosser keeps of its own settings, as its raw print port and its
// settings query see them.
//
// The settings are kept as the text of the settings query's reply: the starting reply
// (a reply file, or the built-in sample) as it stands, with each committed change
// written into it. A job sent to the raw port is UEL-framed PJL:
//   "@PJL DEFAULT KEY=VALUE"   changes a pending setting (the key and value are checked
//                              the way the embosser checks them)
//   "@PJL SERVICE UPDATE"      commits the pending settings: they persist, as the
//                              embosser's NVRAM keeps them, and the next query reports
//                              them ("KEY=VALUE" in the reply: the line of that key is
//                              rewritten, or added to the block)
//   "@PJL SERVICE MEDIAFORCE"  prints the media type test pattern (only logged here)
// Anything else (unknown commands and settings, bad values, data that is not PJL) is
// logged and ignored.
#pragma once

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace embosser_sim {

class StoredSettings {
public:
    explicit StoredSettings(std::string reply) : reply_(std::move(reply)) {}

    // Reads one job as it arrived (`cutAt` bytes when it was longer and was cut off there,
    // else 0) and returns what the embosser did with each of its lines, one log line
    // each.
    std::vector<std::string> TakeJob(const std::string& job, size_t cutAt);

    // The reply of the settings query: the starting reply with the committed changes.
    const std::string& Reply() const { return reply_; }

private:
    void TakeCommand(const std::string& command, const std::string& line, std::vector<std::string>* log);
    void WriteIntoReply(const std::string& key, const std::string& value);

    std::string reply_;
    std::vector<std::pair<std::string, std::string>> pending_;  // key, value as the reply spells it
};

}  // namespace embosser_sim
