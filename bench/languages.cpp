// SPDX-License-Identifier: MIT

// Python.h asks to be the first header.
#define PY_SSIZE_T_CLEAN
#include <Python.h>
//
#include <lauxlib.h>
#include <lua.h>
#include <lualib.h>
#include <tcl.h>

#include <string>

#include "bench/languages.h"

namespace vt63x {
namespace {

bool RunLua(const std::string& text) {
  lua_State* const lua = luaL_newstate();
  luaL_openlibs(lua);
  const bool done = luaL_dostring(lua, text.c_str()) == LUA_OK;
  lua_close(lua);
  return done;
}

bool RunTcl(const std::string& text) {
  static const bool initialised = [] {
    Tcl_FindExecutable(nullptr);
    return true;
  }();
  static_cast<void>(initialised);
  Tcl_Interp* const tcl = Tcl_CreateInterp();
  const bool done = Tcl_Eval(tcl, text.c_str()) == TCL_OK;
  Tcl_DeleteInterp(tcl);
  return done;
}

bool RunPython(const std::string& text) {
  if (!Py_IsInitialized()) Py_InitializeEx(0);
  return PyRun_SimpleString(text.c_str()) == 0;
}

std::string Repeat(const std::string& line, int lines) {
  std::string text;
  text.reserve(line.size() * static_cast<std::size_t>(lines));
  for (int i = 0; i < lines; ++i) text += line;
  return text;
}

}  // namespace

bool LuaLoop(int passes) {
  return RunLua("local ml = {[0] = 0} for i = 1, " + std::to_string(passes) +
                " do ml[0] = (ml[0] + 1) % 256 if ml[0] ~= 0 then end end");
}

bool TclLoop(int passes) {
  return RunTcl("proc run {} { set ml(0) 0; for {set i 0} {$i < " + std::to_string(passes) +
                "} {incr i} { set ml(0) [expr {($ml(0) + 1) % 256}]; if {$ml(0) != 0} {} } }; run");
}

bool PythonLoop(int passes) {
  return RunPython("def run():\n ml = [0]\n for i in range(" + std::to_string(passes) +
                   "):\n  ml[0] = (ml[0] + 1) % 256\n  if ml[0] != 0: pass\nrun()\n");
}

// Lua allows 2^18 or so constants and jumps, but no limit on statements in a chunk of this kind.
bool LuaLines(int lines) { return RunLua("ml = {}\n" + Repeat("ml[0] = 0x5A\n", lines)); }
bool TclLines(int lines) { return RunTcl(Repeat("set ml(0) 0x5A\n", lines)); }
bool PythonLines(int lines) { return RunPython("ml = [0]\n" + Repeat("ml[0] = 0x5A\n", lines)); }

}  // namespace vt63x
