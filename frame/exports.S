/*
 * Export stubs. Every exported name is a stub on a 32-byte grid that loads
 * its slot of the slot table and jumps there; the slot holds the address of
 * the hidden front function h9_<name>. The stub touches neither the arguments
 * nor the result. The slot table is written only by the loader's relative
 * relocations.
 */

/* Pass 1: the slot table. */
        .section .data.rel,"aw",@progbits
#ifdef __x86_64__
        .p2align 3
#define ORV_EXPORT(n) .hidden h9_##n; h9_slot_##n: .quad h9_##n;
#else
        .p2align 2
#define ORV_EXPORT(n) .hidden h9_##n; h9_slot_##n: .long h9_##n;
#endif
        .type h9_slotTable,@object
h9_slotTable:
#include "frame/exports.inc"
        .size h9_slotTable, .-h9_slotTable
#undef ORV_EXPORT

/* Pass 2: the stubs. */
        .text
#ifdef __x86_64__
#define ORV_EXPORT(n) \
        .p2align 5; .globl n; .type n,@function; \
n:      jmp *h9_slot_##n(%rip); \
        .size n, .-n;
#else
        /* 32-bit: the table's address comes from the GOT base, found through
         * a thunk that returns its own return address in ecx. */
        .section .text.h9_pcThunkCx,"ax",@progbits
        .p2align 4
        .hidden h9_pcThunkCx
        .type h9_pcThunkCx,@function
h9_pcThunkCx:
        movl (%esp), %ecx
        ret
        .size h9_pcThunkCx, .-h9_pcThunkCx
        .text
#define ORV_EXPORT(n) \
        .p2align 5; .globl n; .type n,@function; \
n:      call h9_pcThunkCx; \
        addl $_GLOBAL_OFFSET_TABLE_, %ecx; \
        jmp *h9_slot_##n@GOTOFF(%ecx); \
        .size n, .-n;
#endif
#include "frame/exports.inc"
#undef ORV_EXPORT

        .section .note.GNU-stack,"",@progbits
