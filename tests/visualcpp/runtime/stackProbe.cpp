// Functions with more than a page of local variables call this first. Windows grows a stack page by page, through the
// guard page below it, so every page down to the new end has to be touched in order.

// rax: the size, which must stay. Only r10 and r11 may be changed.
__asm__(".text\n"
        ".globl __chkstk\n"
        "__chkstk:\n"
        "    lea  r10, [rsp + 8]\n"
        "    mov  r11, r10\n"
        "    sub  r10, rax\n"
        "    jae  1f\n"
        "    xor  r10d, r10d\n" // more than there are addresses
        "1:  and  r10, -4096\n"
        "    and  r11, -4096\n"
        "2:  cmp  r11, r10\n"
        "    jbe  3f\n"
        "    sub  r11, 4096\n"
        "    test byte ptr [r11], 0\n"
        "    jmp  2b\n"
        "3:  ret\n");
