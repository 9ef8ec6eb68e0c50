// The pictures of corekit/draw/g_tex.h, as read-only data: rows of pixels, and the PNG files of the
// sharper set.

        .macro picture name, file
        .globl \name
        .type \name, %object
        .balign 16
\name:
        .incbin "\file"
        .size \name, . - \name
        .endm

        .macro sharper name, file
        picture \name, "\file"
        .globl \name\()_end
\name\()_end:
        .endm

        .section .rodata
        picture g_tex_interface, "interface.raw"
        picture g_tex_elements, "elements.raw"
        picture g_tex_map, "map.raw"
        picture g_tex_background, "background.raw"
        sharper g_tex_interface_2x, "interface@2x.png"
        sharper g_tex_elements_2x, "elements@2x.png"
        sharper g_tex_map_2x, "map@2x.png"
        sharper g_tex_background_2x, "background@2x.png"

        .section .note.GNU-stack, "", %progbits
