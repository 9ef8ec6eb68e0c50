// OpenGL for the files that draw: its calls, as `gl.Begin(...)`, and the one that it leaves to the
// window library, the swap.
#pragma once

#include <GL/gl.h>
#include <GL/glext.h>

#include <string>

// Every call that is made of the library itself; one that is missing here does not compile. Those
// of its extensions are glExt's.
// clang-format off
#define PLT_GL_CALLS(CALL) \
  CALL(Begin) CALL(BindTexture) CALL(BlendFunc) CALL(Clear) CALL(ClearColor) CALL(Color3fv) CALL(Color4f) CALL(ColorPointer) \
  CALL(CopyTexSubImage2D) CALL(DeleteTextures) CALL(DepthMask) CALL(Disable) \
  CALL(DisableClientState) CALL(DrawArrays) CALL(Enable) CALL(EnableClientState) CALL(End) \
  CALL(EndList) CALL(Frustum) CALL(GenTextures) CALL(GetError) CALL(GetFloatv) CALL(GetIntegerv) \
  CALL(GetString) CALL(IsEnabled) CALL(LineWidth) CALL(LoadIdentity) CALL(MatrixMode) CALL(Ortho) \
  CALL(PixelStorei) CALL(PolygonOffset) CALL(ReadBuffer) CALL(ReadPixels) CALL(Scissor) \
  CALL(TexCoord2f) CALL(TexCoordPointer) CALL(TexEnvfv) CALL(TexEnvi) CALL(TexImage2D) \
  CALL(TexParameteri) CALL(TexSubImage2D) CALL(Vertex2f) CALL(VertexPointer) CALL(Viewport)
// clang-format on

#define PLT_GL_POINTER(name) decltype(&::gl##name) name = nullptr;
struct plt_gl_calls {
  PLT_GL_CALLS(PLT_GL_POINTER)
};
#undef PLT_GL_POINTER

extern plt_gl_calls gl;  // null, all of them, before the library is loaded

// Loads the library, once: before the first window. False, with the reason, if it is not there.
// Main thread.
bool PLT_load_gl(std::string* error);

// Set by the window layer once it has a window with a context; null without one. Main thread.
extern void (*PLT_swap_hook)();

// Shows what was drawn. Does nothing while there is no window.
void PLT_swap_buffers();
