// A driver library that offers FC_Inicializa but neither FC_Operacao nor
// FC_Finaliza.
#define SEM_OPERACAO
#define SEM_FINALIZA
#include "MrZandor_falhas.cpp"
