// The four pictures of corekit/draw/g_tex.h, as read-only data.

        .macro picture name, file
        .globl \name
        .type \name, %object
        .balign 16
\name:
        .incbin "\file"
        .size \name, . - \name
        .endm

        .section .rodata
        picture g_tex_interface, "interface.raw"
        picture g_tex_elements, "elements.raw"
        picture g_tex_map, "map.raw"
        picture g_tex_background, "background.raw"

        .section .note.GNU-stack, "", %progbits
