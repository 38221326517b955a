#include "protocol/frame.h"

#include <algorithm>

#include "protocol/tarvo_error.h"

namespace frame {

namespace {

// Most answers fit there, too, and are then read into the memory of their request.
constexpr std::size_t kUsualSize = 64;

std::size_t Room(std::size_t payload_size) {
    return std::max(kHeadSize + kMinLength + payload_size, kUsualSize);
}

}  // namespace

Bytes NewPayload(std::size_t size) {
    Bytes payload;
    payload.reserve(Room(size));
    payload.resize(size);
    return payload;
}

Bytes NewPayload(std::initializer_list<unsigned char> bytes) {
    Bytes payload = NewPayload(bytes.size());
    std::copy(bytes.begin(), bytes.end(), payload.begin());
    return payload;
}

Bytes NewWordPayload(std::uint16_t word) {
    return NewPayload({static_cast<unsigned char>(word >> 8U), static_cast<unsigned char>(word)});
}

unsigned char Sum(const unsigned char* bytes, int count) {
    unsigned sum = 0;
    for (int i = 0; i < count; ++i) {
        sum += bytes[i];
    }
    return static_cast<unsigned char>(sum);
}

void Build(kkm_command command, unsigned char net_num, Bytes& data, unsigned sum_length_mask) {
    const unsigned char header[] = {0x00, static_cast<unsigned char>(data.size() + kMinLength),
                                    net_num, static_cast<unsigned char>(command)};
    data.reserve(Room(data.size()));
    data.insert(data.begin(), header, header + sizeof header);
    const auto summed = static_cast<int>((data.size() - 2) & sum_length_mask);
    data.push_back(Sum(data.data() + 2, summed));
}

Fault CheckHead(unsigned char start, unsigned char length) {
    if (start != 0) {
        return {errProtocol, "CTarvo::getPacket: ctrlbuf[0]!=0"};
    }
    if (length > kMaxLength) {
        return {errProtocol, "CTarvo::getPacket: size packet>200"};
    }
    if (length < kMinLength) {
        return {errProtocol, "CTarvo::getPacket: size packet<3"};
    }
    return {0, nullptr};
}

Fault CheckBody(const unsigned char* body, unsigned length, unsigned char net_num) {
    if (Sum(body, static_cast<int>(length) - 1) != body[length - 1]) {
        return {errProtocol, "CTarvo::getPacket: ERROR ks"};
    }
    if (net_num != 0 && body[0] != net_num) {
        return {errNetNum, "CTarvo::getPacket: ERROR m_NetNum"};
    }
    return {0, nullptr};
}

}  // namespace frame
