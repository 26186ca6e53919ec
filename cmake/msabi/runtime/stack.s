# __chkstk: rax is the number of bytes that a function is about to take off its stack. Windows enlarges a stack only by the
# page below those in use, so each page down to there is touched in turn. All registers keep their values.
    .intel_syntax noprefix
    .text
    .globl __chkstk
    .def __chkstk; .scl 2; .type 32; .endef
    .seh_proc __chkstk
__chkstk:
    push r10
    .seh_stackalloc 8
    push r11
    .seh_stackalloc 8
    .seh_endprologue
    lea r10, [rsp + 24]
    sub r10, rax
    jae 1f
    xor r10d, r10d          # more than there is: the touched pages end in a stack overflow
1:  mov r11, gs:[0x10]      # the lowest page in use
2:  cmp r11, r10
    jbe 3f
    sub r11, 4096
    mov byte ptr [r11], 0
    jmp 2b
3:  pop r11
    pop r10
    ret
    .seh_endproc

# __security_check_cookie: rcx is what a function has found on its stack. Ends the process if that was overwritten.
    .globl __security_check_cookie
    .def __security_check_cookie; .scl 2; .type 32; .endef
__security_check_cookie:
    cmp rcx, [rip + __security_cookie]
    jne 1f
    ret
1:  mov ecx, 2              # FAST_FAIL_STACK_COOKIE_CHECK_FAILURE
    int 0x29
