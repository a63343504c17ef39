// The authentication library stand-in without its "carregaECF" entry point.
#define PD_SEM_CARREGAECF
#include "pd_autentica.cpp"
