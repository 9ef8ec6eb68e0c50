// The window's icon, as read-only data: rows of RGBA, the lowest first.

        .section .rodata
        .globl g_icon
        .type g_icon, %object
        .balign 16
g_icon:
        .incbin "icon.raw"
        .size g_icon, . - g_icon

        .section .note.GNU-stack, "", %progbits
