#include "platform/windows/seh_call.h"

#include "platform/windows/win32.h"

// `frame` is the stack of CorvaneSehCall; its word at 32 takes the code, since not every system
// hands it over in a register.
extern "C" LONG CorvaneSehFilter(EXCEPTION_POINTERS* pointers, void* frame) {
  constexpr DWORD kLastErrorCode = 0xFFFF;  // RPC raises plain error codes
  const DWORD code = pointers->ExceptionRecord->ExceptionCode;
  static_cast<DWORD*>(frame)[8] = code;
  switch (code) {
    case EXCEPTION_ACCESS_VIOLATION:
    case EXCEPTION_IN_PAGE_ERROR:
    case EXCEPTION_DATATYPE_MISALIGNMENT:
    case EXCEPTION_ILLEGAL_INSTRUCTION:
    case EXCEPTION_PRIV_INSTRUCTION:
    case EXCEPTION_INT_DIVIDE_BY_ZERO:
      return EXCEPTION_EXECUTE_HANDLER;
    default:
      return code <= kLastErrorCode ? EXCEPTION_EXECUTE_HANDLER : EXCEPTION_CONTINUE_SEARCH;
  }
}

asm(R"(
  .text
  .globl CorvaneSehCall
  .def CorvaneSehCall; .scl 2; .type 32; .endef
  .seh_proc CorvaneSehCall
CorvaneSehCall:
  subq $40, %rsp
  .seh_stackalloc 40
  .seh_endprologue
.Lcorvane_try:
  movq %rcx, %rax
  movq %rdx, %rcx
  call *%rax
  nop
.Lcorvane_end:
  xorl %eax, %eax
.Lcorvane_out:
  addq $40, %rsp
  ret
.Lcorvane_except:
  movl 32(%rsp), %eax
  jmp .Lcorvane_out
  .seh_handler __C_specific_handler, @except
  .seh_handlerdata
  .long 1
  .rva .Lcorvane_try, .Lcorvane_end, CorvaneSehFilter, .Lcorvane_except
  .text
  .seh_endproc
)");
