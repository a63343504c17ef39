// A driver library without FC_Inicializa.
#define SEM_INICIALIZA
#include "MrZandor_falhas.cpp"
