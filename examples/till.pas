{ A small till in Free Pascal: connects, sells two lines with a discount for cash, prints the check
  and reads the register's counters.
    till DEVICE        (for example /dev/ttyUSB0) }
program till;

{$mode objfpc}{$H+}
{$linklib VeskTarvoM5}
{$linklib c}

uses
  SysUtils, Math, ctypes;

type
  TCheckPrepare = procedure(step: cuchar); cdecl;

function ConnectKKMDevice(device: PChar): cint; cdecl; external;
procedure DisconnectKKM; cdecl; external;
function GetErrorCode: cint; cdecl; external;
function KKMErrorName(code: cint): PChar; cdecl; external;
function KKMErrorAdvice(code: cint): PChar; cdecl; external;
function cbAddSale(name: PChar; price, quantity: cdouble; section: cint): cint; cdecl; external;
function cbSetDiscountValue(value: cint): cint; cdecl; external;
function cbSetCash(sum: cdouble): cint; cdecl; external;
function cbGetSum: cdouble; cdecl; external;
function cbGetSalesCount: cint; cdecl; external;
function CheckClose: cint; cdecl; external;
function PrintCheck: cint; cdecl; external;
function GetKLNum(number: pcint): cint; cdecl; external;
function GetSaleNum(number: pcint): cint; cdecl; external;
function GetCheckCount(count: pcint): cint; cdecl; external;
function GetCashSum(which: cint; sum: pcdouble): cint; cdecl; external;

var
  EventCheckPrepare: TCheckPrepare; cvar; external;

procedure OnProgress(step: cuchar); cdecl;
begin
  if step = 0 then
    WriteLn('printing ...')
  else
    WriteLn('check closed');
  Flush(Output);
end;

{ Raises an exception that says which step failed, why, and what to do. }
procedure Fail(const step: string; code: cint);
begin
  raise Exception.CreateFmt('%s: error %d, %s' + LineEnding + '%s',
    [step, code, string(KKMErrorName(code)), string(KKMErrorAdvice(code))]);
end;

{ Turns a result of 0 into an exception. }
procedure Require(callResult: cint; const step: string);
begin
  if callResult = 0 then
    Fail(step, GetErrorCode());
end;

type
  TCounters = record
    tape, checks, sales: cint;
  end;

function ReadCounters(out now: TCounters): Boolean;
begin
  Result := (GetKLNum(@now.tape) <> 0) and (GetCheckCount(@now.checks) <> 0) and
    (GetSaleNum(@now.sales) <> 0);
end;

{ Returns when the check is printed. After errors 2 and 32 the driver does not know. The counters
  do, if they are read before anything else is done, disconnecting included. }
procedure PrintTheCheck;
var
  before, after: TCounters;
  lines, code: cint;
  checks: cint = -1;
  sales: cint = -1;
begin
  lines := cbGetSalesCount();
  Require(Ord(ReadCounters(before)), 'counters');
  Require(CheckClose(), 'check');
  if PrintCheck() <> 0 then
    Exit;
  code := GetErrorCode();
  if (code <> 2) and (code <> 32) then
    Fail('check', code);
  if ReadCounters(after) and (after.tape = before.tape) then
  begin
    checks := (after.checks - before.checks + 65536) mod 65536;
    sales := (after.sales - before.sales + 65536) mod 65536;
  end;
  if (checks = 1) and (sales = lines) then
  begin
    WriteLn(StdErr, 'error ', code, ', but the counters show the check: it is printed');
    Exit;
  end;
  if (checks = 0) and (sales = 0) then
    WriteLn(StdErr, 'the counters show no check')
  else
    WriteLn(StdErr, 'the counters do not tell: look at the paper');
  Fail('check', code);
end;

procedure Sell(const device: string);
var
  check: cint = 0;
  drawer: cdouble = 0;
begin
  Require(ConnectKKMDevice(PChar(device)), 'connect');
  try
    Require(cbAddSale('Bread', 25.50, 2, 1), 'sale');
    Require(cbAddSale('Apples', 80.00, 0.75, 2), 'sale');
    Require(cbSetDiscountValue(-5), 'payment');
    Require(cbSetCash(200), 'payment');
    WriteLn('to pay: ', cbGetSum():0:2);
    WriteLn('waiting for the cashier to ask for the check');
    Flush(Output);
    PrintTheCheck();
    if (GetCheckCount(@check) <> 0) and (GetCashSum(1, @drawer) <> 0) then
      WriteLn('printed check ', check, '; sales for cash so far: ', drawer:0:2)
    else
      WriteLn('printed; the counters could not be read: error ', GetErrorCode());
  finally
    DisconnectKKM();
  end;
end;

begin
  { The library was compiled for a host whose floating point raises no signals. }
  SetExceptionMask([exInvalidOp, exDenormalized, exZeroDivide, exOverflow, exUnderflow, exPrecision]);
  if ParamCount <> 1 then
  begin
    WriteLn(StdErr, 'usage: till DEVICE');
    Halt(2);
  end;
  EventCheckPrepare := @OnProgress;
  try
    Sell(ParamStr(1));
  except
    on e: Exception do
    begin
      WriteLn(StdErr, e.Message);
      Halt(1);
    end;
  end;
end.
