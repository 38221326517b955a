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
function CheckClose: cint; cdecl; external;
function PrintCheck: cint; cdecl; external;
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

{ Turns a result of 0 into an exception that says which step failed, why, and what to do. }
procedure Require(callResult: cint; const step: string);
var
  code: cint;
begin
  if callResult = 0 then
  begin
    code := GetErrorCode();
    raise Exception.CreateFmt('%s: error %d, %s' + LineEnding + '%s',
      [step, code, string(KKMErrorName(code)), string(KKMErrorAdvice(code))]);
  end;
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
    Require(CheckClose(), 'check');
    Require(PrintCheck(), 'check');
    Require(GetCheckCount(@check), 'counters');
    Require(GetCashSum(1, @drawer), 'counters');
    WriteLn('printed check ', check, '; sales for cash so far: ', drawer:0:2);
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
