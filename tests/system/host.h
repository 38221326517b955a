// A host program: the shipped library, loaded at run time and called by its mangled names.
#pragma once

#include <string>
#include <vector>

#include "VeskTarvoM5/VeskTarvoM5.h"

namespace test {

// The library of the build. Loaded by the constructor, unloaded by the destructor. Every name of
// the interface is a member; a missing one ends the test program.
class Library {
    void* handle_;

    void* Find(const char* symbol) const;
    template <typename Signature>
    Signature* Function(const char* symbol) const {
        return reinterpret_cast<Signature*>(Find(symbol));
    }
    template <typename Variable>
    Variable& Data(const char* symbol) const {
        return *static_cast<Variable*>(Find(symbol));
    }

#define VESK_FUNCTION(name, symbol) \
    decltype(::name)* const name = Function<decltype(::name)>(symbol)
#define VESK_VARIABLE(name) decltype(::name)& name = Data<decltype(::name)>(#name)

  public:
    Library();
    ~Library();
    Library(const Library&) = delete;
    Library& operator=(const Library&) = delete;

    // Address of any symbol, null when there is none.
    void* Lookup(const char* symbol) const;

    VESK_FUNCTION(ConnectKKM, "_Z10ConnectKKMi");
    VESK_FUNCTION(ConnectKKMDevice, "_Z16ConnectKKMDevicePc");
    VESK_FUNCTION(DisconnectKKM, "_Z13DisconnectKKMv");
    VESK_FUNCTION(GetErrorCode, "_Z12GetErrorCodev");
    VESK_FUNCTION(GetErrorMsg, "_Z11GetErrorMsgv");
    VESK_FUNCTION(KKMErrorName, "_Z12KKMErrorNamei");
    VESK_FUNCTION(KKMErrorAdvice, "_Z14KKMErrorAdvicei");

    VESK_FUNCTION(cbAddSale, "_Z9cbAddSalePcddi");
    VESK_FUNCTION(cbDeleteSale, "_Z12cbDeleteSalei");
    VESK_FUNCTION(cbGetSale, "_Z9cbGetSaleiPPcPdS1_Pi");
    VESK_FUNCTION(cbGetSalesCount, "_Z15cbGetSalesCountv");
    VESK_FUNCTION(cbClearSales, "_Z12cbClearSalesv");
    VESK_FUNCTION(cbGetSum, "_Z8cbGetSumv");
    VESK_FUNCTION(cbSetCash, "_Z9cbSetCashd");
    VESK_FUNCTION(cbGetCash, "_Z9cbGetCashv");
    VESK_FUNCTION(cbSetReturnMode, "_Z15cbSetReturnModei");
    VESK_FUNCTION(cbGetReturnMode, "_Z15cbGetReturnModev");
    VESK_FUNCTION(cbSetCreditMode, "_Z15cbSetCreditModei");
    VESK_FUNCTION(cbGetCreditMode, "_Z15cbGetCreditModev");
    VESK_FUNCTION(cbSetDiscountValue, "_Z18cbSetDiscountValuei");
    VESK_FUNCTION(cbGetDiscountValue, "_Z18cbGetDiscountValuev");
    VESK_FUNCTION(cbSetClearBufMode, "_Z17cbSetClearBufModei");
    VESK_FUNCTION(cbGetClearBufMode, "_Z17cbGetClearBufModev");
    VESK_FUNCTION(cbClearTitle, "_Z12cbClearTitlev");
    VESK_FUNCTION(cbClearBottom, "_Z13cbClearBottomv");

    VESK_FUNCTION(CheckPrintPrepare, "_Z17CheckPrintPreparev");
    VESK_FUNCTION(CheckClose, "_Z10CheckClosev");
    VESK_FUNCTION(PrintCheck, "_Z10PrintCheckv");
    VESK_FUNCTION(CheckCancel, "_Z11CheckCancelv");
    VESK_FUNCTION(GetDiscountMode, "_Z15GetDiscountModev");

    VESK_FUNCTION(GetSmenaNum, "_Z11GetSmenaNumPi");
    VESK_FUNCTION(GetKLNum, "_Z8GetKLNumPi");
    VESK_FUNCTION(GetSaleNum, "_Z10GetSaleNumPi");
    VESK_FUNCTION(GetCheckCount, "_Z13GetCheckCountPi");
    VESK_FUNCTION(GetNI, "_Z5GetNIPd");
    VESK_FUNCTION(GetKKMNum, "_Z9GetKKMNumPi");
    VESK_FUNCTION(GetCashSum, "_Z10GetCashSumiPd");
    VESK_FUNCTION(GetTax, "_Z6GetTaxhPd");
    VESK_FUNCTION(GetSmenaStatus, "_Z14GetSmenaStatusPi");
    VESK_FUNCTION(GetKKMVers, "_Z10GetKKMVersPi");
    VESK_FUNCTION(ReadSaleFromKL, "_Z14ReadSaleFromKLiPhS_PdS0_S0_S0_S0_S0_S_PtS_S_S_S_");

    VESK_FUNCTION(Feed, "_Z4Feedi");
    VESK_FUNCTION(KKMPrintStr, "_Z11KKMPrintStrPc");
    VESK_FUNCTION(Lock, "_Z4Lockv");
    VESK_FUNCTION(UnLock, "_Z6UnLockv");
    VESK_FUNCTION(ClearIndicator, "_Z14ClearIndicatorv");
    VESK_FUNCTION(SetSupplierCode, "_Z15SetSupplierCodePc");

    VESK_FUNCTION(CharToOem, "_Z9CharToOemPcS_");
    VESK_FUNCTION(OemToChar, "_Z9OemToCharPcS_");
    VESK_FUNCTION(GetTickCount, "_Z12GetTickCountv");
    VESK_FUNCTION(Sleep, "_Z5Sleepj");
    VESK_FUNCTION(GetLastErrorMsg, "_Z15GetLastErrorMsgB5cxx11v");
    VESK_FUNCTION(ULtoHex, "_Z7ULtoHexm");
    VESK_FUNCTION(RoundHalfUp, "_Z5roundd");
    VESK_FUNCTION(DbgTrace, "_Z8DbgTracePKcz");
    VESK_FUNCTION(zetdGetErrorMsg, "_Z15zetdGetErrorMsgi");

    VESK_VARIABLE(errVeskTarvo);
    VESK_VARIABLE(strErrorMsg);
    VESK_VARIABLE(err_msg);
    VESK_VARIABLE(err_msg_count);
    VESK_VARIABLE(EventErrorProc);
    VESK_VARIABLE(EventQuery);
    VESK_VARIABLE(EventCheckPrepare);
    VESK_VARIABLE(EventCloseCheck);
    VESK_VARIABLE(hInstance);
    VESK_VARIABLE(LibID);

#undef VESK_FUNCTION
#undef VESK_VARIABLE
};

// Whether the library is in the process, without loading it.
bool LibraryIsLoaded();

// A fresh working directory, in memory where the system has such a file system: a slow disk would
// delay the register's answers. The constructor enters it, the destructor leaves and removes it.
class WorkingFolder {
  public:
    WorkingFolder();
    ~WorkingFolder();
    WorkingFolder(const WorkingFolder&) = delete;
    WorkingFolder& operator=(const WorkingFolder&) = delete;

    std::string Path(const std::string& file) const { return path_ + "/" + file; }
    // Contents of a file in it; empty when there is none.
    std::string Read(const std::string& file) const;
    std::string Traced() const { return Read("VeskTarvoM5.log"); }

  private:
    std::string path_;
    std::string left_;
};

// Writable copy of a text, for functions that take char*.
inline std::vector<char> Text(const std::string& text) {
    return {text.c_str(), text.c_str() + text.size() + 1};
}

}  // namespace test
