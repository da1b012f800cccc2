// What the loader needs for control-flow guard: where the calls through pointers go to be checked, and the table of
// functions that they may reach. The linker makes the table and enters the object of this name into the image's header.

// Where the loader enforces nothing, a check finds every target good, and a checked call is a plain one, to what rax
// holds.
__asm__(".text\n"
        "qel_check_nothing:\n"
        "    ret\n"
        "qel_call_unchecked:\n"
        "    jmp  rax\n");

// The loader puts its own functions there.
__asm__(".section .00cfg, \"dr\"\n"
        ".balign 8\n"
        ".globl __guard_check_icall_fptr\n"
        "__guard_check_icall_fptr:    .quad qel_check_nothing\n"
        ".globl __guard_dispatch_icall_fptr\n"
        "__guard_dispatch_icall_fptr: .quad qel_call_unchecked\n");

// An IMAGE_LOAD_CONFIG_DIRECTORY64 in assembly: the linker's symbols are numbers, which C++ cannot put into a constant.
__asm__(".section .rdata, \"dr\"\n"
        ".balign 8\n"
        ".globl _load_config_used\n"
        "_load_config_used:\n"
        "    .long 192\n"                      // Size
        "    .zero 84\n"                       // to EditList
        "    .quad __security_cookie\n"        // SecurityCookie
        "    .zero 16\n"                       // exception handlers: of 32-bit images only
        "    .quad __guard_check_icall_fptr\n" // GuardCFCheckFunctionPointer
        "    .quad __guard_dispatch_icall_fptr\n"
        "    .quad __guard_fids_table\n" // GuardCFFunctionTable
        "    .quad __guard_fids_count\n"
        "    .long __guard_flags\n"     // GuardFlags
        "    .zero 12\n"                // CodeIntegrity
        "    .quad __guard_iat_table\n" // GuardAddressTakenIatEntryTable
        "    .quad __guard_iat_count\n"
        "    .quad __guard_longjmp_table\n" // GuardLongJumpTargetTable
        "    .quad __guard_longjmp_count\n");
