#include "engine/attempts.h"
#include "engine/tarvo_vesk.h"
#include "support/time.h"
#include "support/trace.h"

namespace {

constexpr unsigned kAfterSaleMs = 100;
constexpr std::size_t kPieceSize = 18;
constexpr unsigned kPieces = 4;
static_assert(kPieceSize * kPieces == 72, "the register keeps 72 characters of a title");

}  // namespace

void TTarvoVesk::SendSaleOnce(const sale& line) {
    sendSaleInfo(line);
    Trace("Info: sendSaleInfo -  ok\n");
    status_info status;
    GetStatusInfo(status);
    Trace("Info: GetStatusInfo -  ok\n");
    if (status.command != ks_saleadd) {
        Trace("Error: ks_saleadd != status.command\n");
        throw ETarvoVesk(echDevice);
    }
    resetStatus();
    Trace("Info: resetStatus -  ok\n");
    Sleep(kAfterSaleMs);
}

void TTarvoVesk::TrySendSale(const sale& line) {
    Trace(trace::Line("Info: TrySendSale", " ;title = ", line.title, " ;barcode = ", line.barcode,
                      "; code = ", line.code, "; count = ", line.count, "; price = ", line.price,
                      "; section = ", line.section));
    const int before = TryReadSaleNumber();
    Trace(trace::Line("Info: TrySendSale SaleNumberBefore = ", before));
    int after = before;
    int attempts = 0;
    // The register's counter decides, not the answer. Kept: compared without wrap, so that no line
    // can follow the 255th.
    do {
        ++attempts;
        Trace(trace::Line("Info: TrySendSale send ", attempts));
        try {
            SendSaleOnce(line);
        } catch (...) {
            const Failure failure = CurrentFailure();
            if (failure == Failure::money) {
                Trace("Error: e.m_code == errMoney\n");
                throw ETarvoVesk(echPrice);
            }
            if (failure == Failure::other) {
                Trace("Error: ???\n");
            }
        }
        after = TryReadSaleNumber();
        Trace(trace::Line("Info: TrySendSale SaleNumberAfter = ", after));
    } while (before + 1 != after && attempts < kStepAttempts);
    if (Exhausted(attempts)) {
        Trace(trace::Line("Error: TrySendSale in  send ", before + 1));
        throw ETarvoVesk(echDevice);
    }
    if (attempts > 1) {
        Trace(trace::Line("Warning: ", attempts, "try send for sale ", before + 1));
    }
    TrySendSaleTitle(after, line.title);
    Trace("Info:TrySendSale-ok\n");
}

void TTarvoVesk::TrySendSaleTitle(int saleNumber, const std::string& title) {
    Trace(trace::Line("Info: TrySendSaleTitle ", title, "number sale ", saleNumber));
    if (version() > kkm_ver_301) {
        unsigned piece = 0;
        const int attempts = Attempts(
            kStepAttempts, [&] { SendTitlePieces(saleNumber, title, piece); },
            [] { Trace("Error: ???\n"); });
        if (Exhausted(attempts)) {
            Trace(
                trace::Line("Error: TrySendSaleTitle  try  ", piece, " sale number ", saleNumber));
            throw ETarvoVesk(echDevice);
        }
        if (attempts > 1) {
            Trace(
                trace::Line("Warning: ", attempts, " lcount ", piece, " sale number ", saleNumber));
        }
    }
    Trace("Info: TrySendSaleTitle-ok\n");
}

void TTarvoVesk::SendTitlePieces(int saleNumber, const std::string& title, unsigned& piece) {
    const auto sale_index = static_cast<unsigned char>(saleNumber - 1);
    for (piece = 0; title.size() > kPieceSize * piece && piece < kPieces; ++piece) {
        const std::string text = title.substr(kPieceSize * piece, kPieceSize);
        Trace(trace::Line("Info: line number   ", piece, " '", text, "'"));
        sendSaleStr(sale_index, static_cast<unsigned char>(piece), text);
    }
}
