#include "platform/board/BoardCalls.h"

#include <algorithm>
#include <span>

namespace Korvex3Sync::board {
namespace {

Payload Values(std::initializer_list<int> values) {
    return ValuesPayload({values.begin(), values.size()});
}

std::span<const std::uint8_t> AsBytes(const char* data, std::size_t size) {
    return {reinterpret_cast<const std::uint8_t*>(data), size};
}

}  // namespace

bool Set(BoardLink& board, Command command, std::initializer_list<int> values) {
    return board.Exchange({command, Values(values)}).has_value();
}

bool Query(BoardLink& board, Command command, std::initializer_list<int> values,
           std::initializer_list<int*> outputs) {
    const auto reply = board.Exchange({command, Values(values)});
    if (!reply || reply->Size() != outputs.size() * sizeof(std::int32_t)) {
        return false;
    }
    std::size_t index = 0;
    for (int* const output : outputs) {
        *output = reply->ValueAt(index++);
    }
    return true;
}

bool SetSelected(BoardLink& board, const char* function, int selector,
                 std::initializer_list<int> values) {
    const CommandInfo* const info = FindSelected(function, selector);
    return info && Set(board, info->command, values);
}

bool QuerySelected(BoardLink& board, const char* function, int selector,
                   std::initializer_list<int*> outputs) {
    const CommandInfo* const info = FindSelected(function, selector);
    return info && Query(board, info->command, {}, outputs);
}

bool QueryText(BoardLink& board, Command command, const std::string& sent, std::string& text) {
    Payload payload;
    payload.PutBytes(AsBytes(sent.data(), std::min(sent.size(), Payload::kCapacity)));
    const auto reply = board.Exchange({command, payload});
    if (!reply) {
        return false;
    }
    const auto bytes = reply->Bytes();
    text.assign(bytes.begin(), bytes.end());
    return true;
}

bool WriteUserPage(BoardLink& board, int page, const char* data, int length) {
    if (length < 0 || length > kUserPageSize || (!data && length > 0)) {
        return false;
    }
    std::vector<BoardLink::Request> requests;
    int offset = 0;
    do {
        Payload payload = Values({page, length, offset});
        const int part = std::min(kUserPart, length - offset);
        payload.PutBytes(AsBytes(data + offset, static_cast<std::size_t>(part)));
        requests.push_back({Command::WriteUserMemory, payload});
        offset += part;
    } while (offset < length);
    return board.Exchange(requests).has_value();
}

bool ReadUserPage(BoardLink& board, int page, char* buffer) {
    std::vector<BoardLink::Request> requests;
    for (int offset = 0; offset < kUserPageSize; offset += kUserPart) {
        requests.push_back({Command::ReadUserMemory, Values({page, offset})});
    }
    const auto replies = board.Exchange(requests);
    if (!replies) {
        return false;
    }
    for (const Payload& reply : *replies) {
        const auto bytes = reply.Bytes();
        buffer = std::copy(bytes.begin(), bytes.end(), buffer);
    }
    return true;
}

}  // namespace Korvex3Sync::board
