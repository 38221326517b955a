#include "protocol/tarvo.h"

#include "support/trace.h"

CTarvo::CTarvo(CMiniCom* port) {
    initClass();
    setCom(port);
}

void CTarvo::initClass() {
    m_ver = kkm_ver_unknown;
    trace_ = false;
    log_file_name_ = "TarvoM5.log";
    m_NetNum = 0;
    port_ = nullptr;
    offline_ = false;
    spare_number_ = -1;
    spare_text_.clear();
    spare_words_[0] = 0;
    spare_words_[1] = 0;
    section_ = 0;
}

void CTarvo::setTrace(bool on, const std::string& fileName) {
    trace_ = on;
    log_file_name_ = fileName;
    if (port_ != nullptr) {
        port_->setTrace(on, fileName);
    }
}

void CTarvo::traceMsg(const std::string& msg) {
    if (!trace_ || log_file_name_.empty()) {
        return;
    }
    try {
        const std::time_t now = std::time(nullptr);
        std::tm local{};
        localtime_r(&now, &local);
        TraceLogFile(log_file_name_, trace::Text(local.tm_year + 1900, ":", local.tm_mon + 1, ":",
                                                 local.tm_mday, " ", local.tm_hour, ":",
                                                 local.tm_min, ":", local.tm_sec, " ", msg));
    } catch (...) {
        // Tracing never makes an operation fail.
    }
}

std::string CTarvo::TraceArrayByte(const unsigned char* buf, unsigned char n) {
    return TraceVector(Bytes(buf, buf + n));
}

std::string CTarvo::TraceVector(const Bytes& bytes) {
    std::string text;
    for (const unsigned char byte : bytes) {
        text += std::to_string(byte) + ' ';
    }
    return text;
}
