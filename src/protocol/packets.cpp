#include <algorithm>
#include <utility>

#include "protocol/tarvo.h"
#include "support/time.h"

namespace {

constexpr unsigned kPauseMs = 10;
constexpr unsigned kClearBoth = 12;  // unread input and unsent output

}  // namespace

unsigned char CTarvo::calcKS(const unsigned char* buf, int n) {
    return frame::Sum(buf, n);
}

unsigned char CTarvo::calcKSNoSuppleer(const unsigned char* buf, int n) {
    return frame::Sum(buf, n);
}

void CTarvo::MakePacket(kkm_command cmd, Bytes& data) const {
    frame::Build(cmd, m_NetNum, data, 0xFF);
}

void CTarvo::MakePacketNoSuppleer(kkm_command cmd, Bytes& data) const {
    frame::Build(cmd, m_NetNum, data, ~0U);
}

void CTarvo::SendData(const Bytes& frame) {
    if (offline_) {
        return;
    }
    // A late answer to the previous request would be taken for the answer to this one.
    port_->purgeComm(kClearBoth);
    port_->Write(frame.data(), static_cast<unsigned>(frame.size()));
}

void CTarvo::sendPacket(kkm_command cmd, Bytes& data) {
    Sleep(kPauseMs);
    MakePacket(cmd, data);
    SendData(data);
}

void CTarvo::sendPacket(kkm_command cmd) {
    Bytes data;
    sendPacket(cmd, data);
}

void CTarvo::sendPacketNoSuppleer(kkm_command cmd, Bytes& data) {
    Sleep(kPauseMs);
    MakePacketNoSuppleer(cmd, data);
    SendData(data);
}

void CTarvo::sendPacketNoSuppleer(kkm_command cmd) {
    Bytes data;
    sendPacketNoSuppleer(cmd, data);
}

void CTarvo::GetPacket(packet& pac) {
    Sleep(kPauseMs);
    pac.cmd = ks_none;
    ReadFrame(pac);
}

void CTarvo::GetPacketNoSuppleer(packet& pac) {
    pac.cmd = ks_none;
    Sleep(kPauseMs);
    ReadFrame(pac);
}

void CTarvo::ReadFrame(packet& pac) {
    unsigned char head[2];
    ReadPort(head, sizeof head);
    Judge(frame::CheckHead(head[0], head[1]));
    const unsigned length = head[1];
    unsigned char body[frame::kMaxLength];
    ReadPort(body, length);
    Judge(frame::CheckBody(body, length, m_NetNum));
    pac.cmd = static_cast<kkm_command>(body[1]);
    pac.data.assign(body + 2, body + length - 1);
}

void CTarvo::ReadPort(unsigned char* to, unsigned count) {
    if (offline_) {
        std::fill_n(to, count, static_cast<unsigned char>(0));
    } else {
        port_->Read(to, count);
    }
}

void CTarvo::COMMClearError() {
    if (!offline_) {
        port_->purgeComm(kClearBoth);
    }
}

// The answer takes over the memory of the request.
packet CTarvo::SendAndGet(kkm_command request, Bytes payload) {
    sendPacket(request, payload);
    packet answer{ks_none, std::move(payload)};
    GetPacket(answer);
    return answer;
}

packet CTarvo::Exchange(const Command& command, Bytes payload, unsigned pause_ms) {
    sendPacket(command.request, payload);
    if (pause_ms != 0) {
        Sleep(pause_ms);
    }
    packet answer{ks_none, std::move(payload)};
    GetPacket(answer);
    Judge(answer, command);
    return answer;
}

packet CTarvo::ExchangeNoSuppleer(const Command& command, Bytes payload) {
    sendPacketNoSuppleer(command.request, payload);
    packet answer{};
    GetPacketNoSuppleer(answer);
    Judge(answer, command);
    return answer;
}

status_info CTarvo::ExchangeStatus(kkm_command request, Bytes payload) {
    const packet answer = SendAndGet(request, std::move(payload));
    status_info status;
    GetStatusInfo(answer, status);
    return status;
}

void CTarvo::Judge(const packet& answer, const Command& command) {
    if (answer.cmd != command.answer) {
        throw ETarvo(this, errProtocol, command.fault);
    }
}

void CTarvo::Judge(const frame::Fault& fault) {
    if (fault.detail != nullptr) {
        throw ETarvo(this, fault.code, fault.detail);
    }
}
