package VEL::Parser::Lite;

# Loads the compiled module and documents its methods.

use strict;
use warnings;

our $VERSION = '1.00';

# Our programs contain the compiled half of the module; an ordinary perl loads it.
if (defined &VEL::Parser::Lite::bootstrap) {
    VEL::Parser::Lite::bootstrap();
}
else {
    require XSLoader;
    XSLoader::load(__PACKAGE__);
}

1;

__END__

=head1 NAME

VEL::Parser::Lite - the command database from Perl

=head1 SYNOPSIS

    use VEL::Parser::Lite;

    my $data = VEL::Parser::Lite::NEW();
    if (my $error = $data->loadVELFile('duct.vel')) {
        die "duct.vel: $error\n";
    }
    $data->getStringValue('/FLOW/DOMAIN:Duct/Location', \my $location);
    $data->setStringValue('/FLOW/DOMAIN:Duct/Location', 'B2');
    $data->getFormattedVEL('/', 79, \my @lines);
    print "$_\n" for @lines;

=head1 DESCRIPTION

An object of this class contains the command data of one file as a tree: I<objects>
with a type and a name, I<singletons> with only a type, and I<parameters> with a name
and a value. A path names a node: C</FLOW/DOMAIN:Duct/Location>. A path that does not
begin with a slash is relative to the current path. All methods directly call the
functions of the database.

=head2 Results

Methods that can fail return a B<message>: C<undef> on success, otherwise a text that
says what failed. They do not die. A method gives what it finds in an argument: a
reference to a scalar, which does not change on failure, or a reference to an array,
which is emptied first, even on failure.

An argument that is a flag (C<$isLibrary>, C<$includeLibrary>, C<$propagate>) is a
number. The flag is set if the number is not 0; C<'0.0'> and C<'yes'> are 0.

Only a wrong call dies: a wrong number of arguments (C<Usage: ...>), an invocant that
is not an object of this class (C<self is not of type VEL::Parser::Lite>), an argument
that must be an array reference and is not (C<array is not an array reference>, or the
name of that argument), or one that must be a reference to a scalar and is not
(C<VEL::Parser::Lite::getStringValue: value is not a reference>).

=head2 Texts

Texts are bytes and end at the first NUL. If a Perl text has characters above 255, its
UTF-8 form is used. C<undef> is the empty text.

=head2 Threads

Several threads may use the module, each with its own objects. A new thread gets empty
copies of the objects of the thread that made it: every method except C<DESTROY> dies
with C<self is not of type VEL::Parser::Lite>.

=head1 METHODS

=head2 Making and ending

=over

=item C<< VEL::Parser::Lite::NEW() >>

A new object with an empty database. It takes no argument, not even a class.

=item C<< $data->DESTROY() >>

Frees the database, unless it belongs to the program and the object only refers to it.
Perl calls this method when there are no more references to the object. If a method or
handler of the object is running, nothing is freed. Returns a message.

=item C<< $data->isSameDatabase($other) >>

1 if both objects have the same database: they are one object, or both refer to one
database of the program. Otherwise 0, also if C<$other> is not an object of this class or
has been destroyed.

=back

=head2 Reading VEL text

=over

=item C<< $data->loadVELFile($file) >>

Reads and parses a file. Returns a message.

=item C<< $data->loadVELData($lines) >>

Parses an array of lines as user data. An undefined or missing element dies with
C<Undefined element in array or fetch error>. Returns a message.

=item C<< $data->loadLibraryData($lines) >>

The same, as library data.

=item C<< $data->loadVELLine($line, $isLibrary) >>

Parses one line. Blocks may stay open for the next line. Returns a message.

=item C<< $data->getVELState() >>

The number of blocks that are open.

=item C<< $data->setVELState($level) >>

Closes blocks until no more than C<$level> are open. Returns nothing.

=item C<< $data->readLibraries() >>

Reads the library files that the environment variables C<ZOT5_VEL_LIBS> and
C<ZOT5_VEL_LIBSDIR> name. Returns a message.

=item C<< $data->readNamedLibraries($libList, $defDir) >>

Reads library files. C<$libList> has their names, separated by semicolons; C<$defDir> is
the folder of names without a folder. Returns a message.

=back

=head2 Writing VEL text

=over

=item C<< $data->getFormattedVEL($path, $lineLength, $array) >>

Fills the array with the user data below a node, as it is saved: parameters first,
objects in the order of the rules, lines wrapped at C<$lineLength> (0: not wrapped).
Returns a message.

=item C<< $data->getObjectVEL($path, $array, $includeLibrary) >>

Fills the array with a node and everything below it, in the order of the data. Returns
a message.

=item C<< $data->getTreeText($path) >>

A text for a node and everything below it. Two trees have the same text if and only if
their kinds, types, names, values and order are the same. C<undef> if there is no node.

=back

=head2 Looking at the tree

=over

=item C<< $data->havePath($path) >>

1 if there is a node at the path, otherwise 0.

=item C<< $data->isObject($path) >>

1 for an object or singleton, 0 for a parameter or nothing.

=item C<< $data->isLibrary($path) >>

1 for library data, 0 for user data, -1 for an unknown path.

=item C<< $data->getChildObjectList($path, $array) >>

Fills the array with the child objects, C<TYPE:Name> or C<TYPE>. Returns a message.

=item C<< $data->getChildParamList($path, $array) >>

Fills the array with the names of the parameters. Returns a message.

=item C<< $data->getChildList($path, $childInfo, $groupInfo) >>

Fills C<$childInfo> with a hash for each child (C<name>, C<className>: Param,
Object or Singleton, and C<type>), and C<$groupInfo> with a hash for each group of
children of the same kind and type (C<className>: Parameter, Object or Singleton,
C<type>, C<indices>: an array of positions in C<$childInfo>, descending, and
C<count>). Either may be C<undef>. Returns a message.

=item C<< $data->getObjectsByName($name, $array) >>

Fills the array with the paths of all objects with this name; the name of a singleton
is its type. Returns a message.

=item C<< $data->getObjectsByType($type, $array) >>

Fills the array with the paths of all objects of this type. Returns a message.

=back

=head2 Changing the tree

=over

=item C<< $data->createObject($path, $isLibrary) >>

Makes an object (C<.../TYPE:Name>) or singleton (C<.../TYPE>). Returns a message.

=item C<< $data->createParam($path, $value) >>

Makes a parameter, or gives an existing one a new value. Returns a message.

=item C<< $data->deleteObj($path) >>

Deletes a node and everything below it. Returns a message.

=item C<< $data->deleteParam($path) >>

Deletes a parameter. Returns a message.

=back

=head2 Values

=over

=item C<< $data->getStringValue($path, $value) >>

Sets the scalar to the value, or to C<undef> if there is none. Returns a message.

=item C<< $data->setStringValue($path, $value) >>

Gives an existing parameter a new value. Returns a message.

=item C<< $data->getStringList($path, $array) >>

Fills the array with the value, split at its commas. Returns a message.

=item C<< $data->getIntegerValue($path, $value) >>

Sets the scalar to the value as an integer, rounded half away from zero. Returns
a message.

=item C<< $data->getIntegerList($path, $array) >>

Fills the array with integers, each x + 0.5 without its fraction. Returns a message.

=item C<< $data->getLogicalValue($path, $value) >>

Sets the scalar to -1 for a value such as C<Yes>, and to 0 for a value such as C<No>; a
number is itself. Returns a message.

=item C<< $data->getLogicalList($path, $array) >>

The same for each element. Returns a message.

=back

=head2 Validity

=over

=item C<< $data->isValid($path) >>

1 if the node is marked valid, 0 if not; 3 and 2 if everything below it is also marked;
-1 for an unknown path.

=item C<< $data->setValid($path, $valid) >>

With 1 marks the node, with 2 everything below it; with any other number removes the
mark of the node. Returns a message.

=item C<< $data->setValidEx($path, $valid, $propagate) >>

The same; with C<$propagate> it also removes the marks that depend on the removed one.
Returns a message.

=item C<< $data->getValidationLevel() >>

A number that the object keeps for the validator, 0 at first.

=item C<< $data->setValidationLevel($value) >>

Sets it. Returns a message.

=back

=head2 The current path

=over

=item C<< $data->getCurrentPath() >>

The path to which relative paths are relative, C</> at first.

=item C<< $data->pushPath($path) >>

Makes the path of a node the current one, until C<popPath>. Returns a message.

=item C<< $data->popPath() >>

Goes back to the previous path. Returns a message.

=item C<< $data->changePath($path) >>

Replaces the current path. Returns a message.

=item C<< VEL::Parser::Lite::cleanPath($path) >>

The normal form of a path, without unnecessary spaces and slashes. This is a function,
not a method.

=back

=head2 Handlers

If a handler dies, the operation that called it stops and dies with the same error; the
changes up to then stay. C<last> and C<next> cannot leave a handler. A handler may read
and change the database. If changes call handlers that make changes, this ends at a depth
of 200 with C<Handlers call each other without end>.

=over

=item C<< $data->addChangeHandler($rsub) >>

Adds a handler that is called at every change, after the handlers that were added
before. Its arguments are the path, a code (0: a value changed, 1: an object was created,
2: an object was deleted), the new value and the old value, each C<undef> if there is
none. Only for an object that owns its database. Returns nothing.

=item C<< $data->clearChangeHandlers() >>

Removes all change handlers. Returns nothing.

=item C<< $data->registerActionHandler($handler) >>

Sets the handler for lines that begin with C<< > >>. Its arguments are the first word and
the rest of the line (which may be the empty text). It must return exactly one value,
otherwise the operation dies with C<Missing return value from call_sv on action handler>
or C<Too many return values from call_sv on action handler>; the value itself does not
matter. Replaces the previous handler. Returns a message.

=item C<< $data->invokeAction($action, $args) >>

Calls the action handler with the word and the elements of the array; C<undef>
counts as one empty text. Returns a message.

=back

=cut
