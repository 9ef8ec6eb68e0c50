// The names of the entry points, by group.

#include "corekit/draw/OGL_procs.h"

namespace {

constexpr const char* vbo_names[] = {
    "glBindBufferARB",  "glDeleteBuffersARB",        "glGenBuffersARB",        "glIsBufferARB",
    "glBufferDataARB",  "glBufferSubDataARB",        "glGetBufferSubDataARB",  "glMapBufferARB",
    "glUnmapBufferARB", "glGetBufferParameterivARB", "glGetBufferPointervARB",
};

constexpr const char* vprog_names[] = {
    "glVertexAttrib1dARB",
    "glVertexAttrib1dvARB",
    "glVertexAttrib1fARB",
    "glVertexAttrib1fvARB",
    "glVertexAttrib1sARB",
    "glVertexAttrib1svARB",
    "glVertexAttrib2dARB",
    "glVertexAttrib2dvARB",
    "glVertexAttrib2fARB",
    "glVertexAttrib2fvARB",
    "glVertexAttrib2sARB",
    "glVertexAttrib2svARB",
    "glVertexAttrib3dARB",
    "glVertexAttrib3dvARB",
    "glVertexAttrib3fARB",
    "glVertexAttrib3fvARB",
    "glVertexAttrib3sARB",
    "glVertexAttrib3svARB",
    "glVertexAttrib4NbvARB",
    "glVertexAttrib4NivARB",
    "glVertexAttrib4NsvARB",
    "glVertexAttrib4NubARB",
    "glVertexAttrib4NubvARB",
    "glVertexAttrib4NuivARB",
    "glVertexAttrib4NusvARB",
    "glVertexAttrib4bvARB",
    "glVertexAttrib4dARB",
    "glVertexAttrib4dvARB",
    "glVertexAttrib4fARB",
    "glVertexAttrib4fvARB",
    "glVertexAttrib4ivARB",
    "glVertexAttrib4sARB",
    "glVertexAttrib4svARB",
    "glVertexAttrib4ubvARB",
    "glVertexAttrib4uivARB",
    "glVertexAttrib4usvARB",
    "glVertexAttribPointerARB",
    "glEnableVertexAttribArrayARB",
    "glDisableVertexAttribArrayARB",
    "glProgramStringARB",
    "glBindProgramARB",
    "glDeleteProgramsARB",
    "glGenProgramsARB",
    "glProgramEnvParameter4dARB",
    "glProgramEnvParameter4dvARB",
    "glProgramEnvParameter4fARB",
    "glProgramEnvParameter4fvARB",
    "glProgramLocalParameter4dARB",
    "glProgramLocalParameter4dvARB",
    "glProgramLocalParameter4fARB",
    "glProgramLocalParameter4fvARB",
    "glGetProgramEnvParameterdvARB",
    "glGetProgramEnvParameterfvARB",
    "glGetProgramLocalParameterdvARB",
    "glGetProgramLocalParameterfvARB",
    "glGetProgramivARB",
    "glGetProgramStringARB",
    "glGetVertexAttribdvARB",
    "glGetVertexAttribfvARB",
    "glGetVertexAttribivARB",
    "glGetVertexAttribPointervARB",
    "glIsProgramARB",
};

constexpr const char* occlude_names[] = {
    "glGenQueriesARB", "glDeleteQueriesARB", "glIsQueryARB",          "glBeginQueryARB",
    "glEndQueryARB",   "glGetQueryivARB",    "glGetQueryObjectivARB", "glGetQueryObjectuivARB",
};

constexpr const char* shad_objs_names[] = {
    "glDeleteObjectARB",
    "glGetHandleARB",
    "glDetachObjectARB",
    "glCreateShaderObjectARB",
    "glShaderSourceARB",
    "glCompileShaderARB",
    "glCreateProgramObjectARB",
    "glAttachObjectARB",
    "glLinkProgramARB",
    "glUseProgramObjectARB",
    "glValidateProgramARB",
    "glUniform1fARB",
    "glUniform2fARB",
    "glUniform3fARB",
    "glUniform4fARB",
    "glUniform1iARB",
    "glUniform2iARB",
    "glUniform3iARB",
    "glUniform4iARB",
    "glUniform1fvARB",
    "glUniform2fvARB",
    "glUniform3fvARB",
    "glUniform4fvARB",
    "glUniform1ivARB",
    "glUniform2ivARB",
    "glUniform3ivARB",
    "glUniform4ivARB",
    "glUniformMatrix2fvARB",
    "glUniformMatrix3fvARB",
    "glUniformMatrix4fvARB",
    "glGetObjectParameterfvARB",
    "glGetObjectParameterivARB",
    "glGetInfoLogARB",
    "glGetAttachedObjectsARB",
    "glGetUniformLocationARB",
    "glGetActiveUniformARB",
    "glGetUniformfvARB",
    "glGetUniformivARB",
    "glGetShaderSourceARB",
};

constexpr const char* gshader_names[] = {"glProgramParameteriEXT"};

constexpr const char* vshader_names[] = {
    "glBindAttribLocationARB",
    "glGetActiveAttribARB",
    "glGetAttribLocationARB",
};

constexpr const char* framebuf_names[] = {
    "glIsRenderbufferEXT",          "glBindRenderbufferEXT",
    "glDeleteRenderbuffersEXT",     "glGenRenderbuffersEXT",
    "glRenderbufferStorageEXT",     "glGetRenderbufferParameterivEXT",
    "glIsFramebufferEXT",           "glBindFramebufferEXT",
    "glDeleteFramebuffersEXT",      "glGenFramebuffersEXT",
    "glCheckFramebufferStatusEXT",  "glFramebufferTexture1DEXT",
    "glFramebufferTexture2DEXT",    "glFramebufferTexture3DEXT",
    "glFramebufferRenderbufferEXT", "glGetFramebufferAttachmentParameterivEXT",
    "glGenerateMipmapEXT",
};

constexpr const char* tex_comp_names[] = {
    "glCompressedTexImage3DARB",    "glCompressedTexImage2DARB",    "glCompressedTexImage1DARB",
    "glCompressedTexSubImage3DARB", "glCompressedTexSubImage2DARB", "glCompressedTexSubImage1DARB",
    "glGetCompressedTexImageARB",
};

constexpr const char* multitexture_names[] = {"glActiveTextureARB"};

constexpr const char* sblend_names[] = {"glBlendFuncSeparateEXT", "glBlendEquationSeparateEXT"};

constexpr OGL_proc_group groups[] = {
    {&OGL_extensions::multitexture_avail, multitexture_names},
    {&OGL_extensions::vbo_avail, vbo_names},
    {&OGL_extensions::vprog_avail, vprog_names},
    {&OGL_extensions::occlude_avail, occlude_names},
    {&OGL_extensions::shad_objs_avail, shad_objs_names},
    {&OGL_extensions::gshader_avail, gshader_names},
    {&OGL_extensions::vshader_avail, vshader_names},
    {&OGL_extensions::framebuf_avail, framebuf_names},
    {&OGL_extensions::tex_comp_avail, tex_comp_names},
    {&OGL_extensions::sblend_avail, sblend_names},
};

}  // namespace

std::span<const OGL_proc_group> OGL_proc_groups() {
  return groups;
}
