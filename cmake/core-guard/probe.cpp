#include <QtWidgets/QWidget>
int main() { return 0; }
