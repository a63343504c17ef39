// The agent's plug-in double without its SendInf entry point.
#define OAPLUGIN_SEM_SENDINF
#include "OAPlugin.cpp"
