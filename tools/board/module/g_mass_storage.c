// SPDX-License-Identifier: GPL-2.0
// Debian builds its kernels without g_mass_storage. This one of the same name and parameters lends the card
// through the kernel's own mass storage function, which Debian does build: /usr/lib/board/lend-card puts it
// together.
#include <linux/kmod.h>
#include <linux/module.h>

static char *file;
module_param(file, charp, 0444);
static bool removable;
module_param(removable, bool, 0444);

static int lend(char *what)
{
	char *arguments[] = {"/usr/lib/board/lend-card", what, file, removable ? "1" : "0", NULL};
	char *environment[] = {"PATH=/usr/sbin:/usr/bin:/sbin:/bin", NULL};

	return call_usermodehelper(arguments[0], arguments, environment, UMH_WAIT_PROC) ? -ENODEV : 0;
}

static int __init lend_init(void)
{
	return file ? lend("on") : -EINVAL;
}

static void __exit lend_exit(void)
{
	lend("off");
}

module_init(lend_init);
module_exit(lend_exit);
MODULE_DESCRIPTION("USB mass storage of an emulated inspection camera");
MODULE_LICENSE("GPL");
