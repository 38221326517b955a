// What a host does in a run.
#pragma once

#include <string>
#include <vector>

#include "simulation/random.h"

namespace simulation {

enum class CallKind : std::uint8_t {
    connect,         // number: the port
    connect_device,  // text: the path
    disconnect,
    add_sale,  // text, money, quantity, number: section
    delete_sale,
    get_sale,
    clear_sales,
    get_sum,
    set_cash,             // money
    set_cash_over_total,  // money on top of the buffer's total
    set_return,
    set_credit,
    set_discount,
    set_clear_mode,
    clear_title,
    clear_bottom,
    check_close,
    print_check,
    check_cancel,
    get_shift_number,
    get_tape_number,
    get_sale_number,
    get_check_count,
    get_grand_total,
    get_serial,
    get_cash_sum,  // number: selector
    get_tax,       // number
    get_shift_status,
    get_version,
    read_tape,  // number
    lock,
    unlock,
    clear_indicator,
    feed,          // number
    print_string,  // text
    count
};

const char* NameOf(CallKind kind);

// The host's callbacks.
enum class Callbacks : std::uint8_t { none, plain, throwing };

enum class When : std::uint8_t { always, after_failed_print, after_failed_connect };

struct Call {
    CallKind kind;
    When when = When::always;
    int number = 0;
    double money = 0;
    double quantity = 0;
    std::string text;
};

struct HostPlan {
    std::vector<Call> calls;
    bool asks_for_number = false;  // the driver addresses the register by its network number
    Callbacks callbacks = Callbacks::plain;
    std::uint32_t patience = 0;  // pauses of the driver after which the host ends PrintCheck

    std::uint32_t PrintCalls() const;
    // About how many exchanges a run without faults takes.
    std::uint32_t Exchanges() const;
};

void DrawHost(Random random, HostPlan& plan);

}  // namespace simulation
