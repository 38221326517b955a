#include "protocol/frame.h"

#include "protocol/tarvo_error.h"

namespace frame {

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

Fault CheckBody(const Bytes& body, unsigned char net_num) {
    if (Sum(body.data(), static_cast<int>(body.size()) - 1) != body.back()) {
        return {errProtocol, "CTarvo::getPacket: ERROR ks"};
    }
    if (net_num != 0 && body.front() != net_num) {
        return {errNetNum, "CTarvo::getPacket: ERROR m_NetNum"};
    }
    return {0, nullptr};
}

}  // namespace frame
