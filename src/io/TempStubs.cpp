#include "core/ClassifierCore.h"
template <class T> void Vexaro<T>::loadLASFile(std::string) {}
template <class T> void Vexaro<T>::saveLASFile(std::string) {}
template <class T> bool Vexaro<T>::saveNormalVectors(std::string) { return true; }
template class Vexaro<float>;
template class Vexaro<double>;
