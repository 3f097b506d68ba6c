// SPDX-License-Identifier: GPL-2.0
// The nodes of the board that an emulated machine lacks: I2C bus 4 with the encoder board at 0x67, the video
// decoder's register file, both backlights, the text of the USB port. What hands do to them are the module's
// parameters.
#include <linux/backlight.h>
#include <linux/device.h>
#include <linux/err.h>
#include <linux/i2c.h>
#include <linux/module.h>
#include <linux/slab.h>

static bool encoder = true;
module_param(encoder, bool, 0644);
MODULE_PARM_DESC(encoder, "N: the encoder board does not answer");
static bool usbhost;
module_param(usbhost, bool, 0644);
MODULE_PARM_DESC(usbhost, "Y: the port's text tells of a host");
static uint decoder = 0x45;
module_param(decoder, uint, 0644);
MODULE_PARM_DESC(decoder, "register 0x10 of the video decoder; bit 0: a picture comes");

/* --- I2C --- */

enum { BUS = 4, ENCODER_BOARD = 0x67 };

/* Firmware 97, supply 3.6 V, full battery, no cable out: what a board that was just switched on says. */
static u8 registers[256] = {0x00, 0x61, 0x03, 0x70, 0x00, 0x00, 0x01, 0x00,
			    0x00, 0x00, 0x01, 0x02, 0x00, 0x01, 0x00};

static s32 transfer(struct i2c_adapter *bus, u16 address, unsigned short flags, char direction, u8 at,
		    int size, union i2c_smbus_data *data)
{
	if (address != ENCODER_BOARD || !encoder)
		return -ENXIO;
	if (size == I2C_SMBUS_QUICK)
		return 0;
	if (size != I2C_SMBUS_BYTE_DATA)
		return -EOPNOTSUPP;
	if (direction == I2C_SMBUS_WRITE)
		registers[at] = data->byte;
	else
		data->byte = registers[at];
	return 0;
}

static u32 abilities(struct i2c_adapter *bus)
{
	return I2C_FUNC_SMBUS_QUICK | I2C_FUNC_SMBUS_BYTE_DATA;
}

static const struct i2c_algorithm algorithm = {.functionality = abilities, .smbus_xfer = transfer};
static struct i2c_adapter bus = {.owner = THIS_MODULE, .name = "tubix board", .algo = &algorithm, .nr = BUS};

/* --- video decoder --- */

static const char *const folders[] = {"soc.1", "2100000.aips-bus", "21a8000.i2c", "i2c-2", "2-0020"};
static struct device *decoder_chain[ARRAY_SIZE(folders)];
static struct device *soc;
static unsigned int selected;

static ssize_t adv7180_reg_show(struct device *device, struct device_attribute *attribute, char *text)
{
	return sysfs_emit(text, "0x%02x\n", selected == 0x10 ? decoder & 0xff : 0);
}

static ssize_t adv7180_reg_store(struct device *device, struct device_attribute *attribute, const char *text,
				 size_t size)
{
	int error = kstrtouint(text, 16, &selected);

	return error ? error : size;
}
static DEVICE_ATTR_RW(adv7180_reg);

static void release(struct device *device)
{
	kfree(device);
}

static void drop_decoder(void)
{
	int i;

	for (i = ARRAY_SIZE(folders); i-- > 0;)
		if (decoder_chain[i])
			device_unregister(decoder_chain[i]);
	root_device_unregister(soc);
}

static int make_decoder(void)
{
	struct device *parent;
	int i, error;

	soc = root_device_register("soc0");
	if (IS_ERR(soc))
		return PTR_ERR(soc);
	parent = soc;
	for (i = 0; i < ARRAY_SIZE(folders); i++) {
		struct device *device = kzalloc(sizeof(*device), GFP_KERNEL);

		if (!device) {
			error = -ENOMEM;
			goto drop;
		}
		device->parent = parent;
		device->release = release;
		dev_set_name(device, "%s", folders[i]);
		error = device_register(device);
		if (error) {
			put_device(device);
			goto drop;
		}
		decoder_chain[i] = device;
		parent = device;
	}
	error = device_create_file(parent, &dev_attr_adv7180_reg);
	if (!error)
		return 0;
drop:
	drop_decoder();
	return error;
}

/* --- backlights --- */

static int lit(struct backlight_device *device)
{
	return 0;
}
static const struct backlight_ops backlight = {.update_status = lit};
static struct backlight_device *screen, *head;

static struct backlight_device *make_backlight(const char *name, int most, int now)
{
	const struct backlight_properties properties = {
	    .type = BACKLIGHT_RAW, .max_brightness = most, .brightness = now};

	return backlight_device_register(name, NULL, NULL, &backlight, &properties);
}

/* --- USB port --- */

static struct class *extcon;
static struct device *port;

static ssize_t state_show(struct device *device, struct device_attribute *attribute, char *text)
{
	return sysfs_emit(text, "USB=%d\nSDP=%d\nDOCK=0\nUSB-HOST=%d\n", usbhost, usbhost, usbhost);
}
static DEVICE_ATTR_RO(state);
static struct attribute *port_attrs[] = {&dev_attr_state.attr, NULL};
ATTRIBUTE_GROUPS(port);

/* --- all of it --- */

static int __init board_init(void)
{
	int error = i2c_add_numbered_adapter(&bus);

	if (error)
		return error;
	error = make_decoder();
	if (error)
		goto no_decoder;
	screen = make_backlight("backlight_lcdgrp.26", 7, 7);
	error = PTR_ERR_OR_ZERO(screen);
	if (error)
		goto no_screen;
	head = make_backlight("extledcontrol.27", 60, 0);
	error = PTR_ERR_OR_ZERO(head);
	if (error)
		goto no_head;
	extcon = class_create(THIS_MODULE, "extcon");
	error = PTR_ERR_OR_ZERO(extcon);
	if (error)
		goto no_class;
	port = device_create_with_groups(extcon, NULL, 0, NULL, port_groups, "ci_hdrc.0");
	error = PTR_ERR_OR_ZERO(port);
	if (!error)
		return 0;
	class_destroy(extcon);
no_class:
	backlight_device_unregister(head);
no_head:
	backlight_device_unregister(screen);
no_screen:
	drop_decoder();
no_decoder:
	i2c_del_adapter(&bus);
	return error;
}

static void __exit board_exit(void)
{
	device_unregister(port);
	class_destroy(extcon);
	backlight_device_unregister(head);
	backlight_device_unregister(screen);
	drop_decoder();
	i2c_del_adapter(&bus);
}

module_init(board_init);
module_exit(board_exit);
MODULE_DESCRIPTION("Nodes of an emulated inspection camera's board");
MODULE_LICENSE("GPL");
