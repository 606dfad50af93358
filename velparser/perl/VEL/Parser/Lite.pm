package VEL::Parser::Lite;

# Loads the compiled module and documents its methods.

use strict;
use warnings;

our $VERSION = '1.00';

# The program brings the compiled half along; an ordinary perl loads it.
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

An object of this class holds the command data of one file as a tree: I<objects>
with a type and a name, I<singletons> with a type only, and I<parameters> with a
name and a value. A node is named by its path, C</FLOW/DOMAIN:Duct/Location>; a
path that does not begin with a slash is relative to the current path. All methods
are bound directly to the functions of the database.

=head2 Results

Methods that can fail return a B<message>: C<undef> on success, else a text
that says what went wrong. They do not die. Whatever a method finds goes to an
argument: a reference to a scalar, which stays as it was on failure, or a
reference to an array, which is emptied first, also on failure.

An argument that is a flag (C<$isLibrary>, C<$includeLibrary>, C<$propagate>) is a
number, and set if it is not 0: C<'0.0'> and C<'yes'> are 0.

Only a wrong call dies: a wrong number of arguments (C<Usage: ...>), something
that is not an object of this class (C<self is not of type VEL::Parser::Lite>), no
array reference where one is due (C<array is not an array reference>, or the
name of that argument), no reference to a scalar where one is due
(C<VEL::Parser::Lite::getStringValue: value is not a reference>).

=head2 Texts

Texts are bytes and end at the first NUL. A text of Perl's with characters of 256
and above is taken as its UTF-8 form; C<undef> is the empty text.

=head2 Threads

Several threads may use the module, each with its own objects. In a new thread the
objects of the one that made it are empty: every method but C<DESTROY> dies with
C<self is not of type VEL::Parser::Lite>.

=head1 METHODS

=head2 Making and ending

=over

=item C<< VEL::Parser::Lite::NEW() >>

A new object with an empty database. It takes no argument, not even a class.

=item C<< $data->DESTROY() >>

Frees the database, unless the object only wraps one that belongs to the
program. Perl calls it when the last reference goes. Returns a message: an
object that one of its own methods or handlers is using stays as it is.

=item C<< $data->isSameDatabase($other) >>

1 if both objects belong to the same database: one object, or several that wrap one
database of the program. 0 otherwise, also if C<$other> is not an object of this class, or
one that has been destroyed.

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

Parses one line. Blocks may stay open for the next one. Returns a message.

=item C<< $data->getVELState() >>

The number of blocks that are open.

=item C<< $data->setVELState($level) >>

Closes blocks until no more than C<$level> are open. Returns nothing.

=item C<< $data->readLibraries() >>

Reads the library files that the environment variables C<ZOT5_VEL_LIBS> and
C<ZOT5_VEL_LIBSDIR> name. Returns a message.

=item C<< $data->readNamedLibraries($libList, $defDir) >>

Reads library files: C<$libList> holds their names, separated by semicolons,
C<$defDir> the folder of those without one. Returns a message.

=back

=head2 Writing VEL text

=over

=item C<< $data->getFormattedVEL($path, $lineLength, $array) >>

Fills the array with the user data below a node, as it is saved: parameters
first, objects in their order of output, lines wrapped at C<$lineLength> (0:
not at all). Returns a message.

=item C<< $data->getObjectVEL($path, $array, $includeLibrary) >>

Fills the array with a node and all below it in stored order. Returns a message.

=item C<< $data->getTreeText($path) >>

A text for a node and all below it, the same for trees that are the same in kinds,
types, names, values and order, and for no others. C<undef> where there is no node.

=back

=head2 Looking at the tree

=over

=item C<< $data->havePath($path) >>

1 if there is a node at the path, else 0.

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

Fills the array with the paths of all objects of this name (of a singleton its
type). Returns a message.

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

Deletes a node and all below it. Returns a message.

=item C<< $data->deleteParam($path) >>

Deletes a parameter. Returns a message.

=back

=head2 Values

=over

=item C<< $data->getStringValue($path, $value) >>

Sets the scalar to the value; C<undef> where there is none. Returns a message.

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

Sets the scalar to -1 for a value that says yes, 0 for one that says no; a number
is itself. Returns a message.

=item C<< $data->getLogicalList($path, $array) >>

The same for each element. Returns a message.

=back

=head2 Validity

=over

=item C<< $data->isValid($path) >>

1 if the node is marked valid, 0 if not; 3 and 2 where all below it is marked too;
-1 for an unknown path.

=item C<< $data->setValid($path, $valid) >>

With 1 marks the node, with 2 all below it; with anything else takes the mark of
the node away. Returns a message.

=item C<< $data->setValidEx($path, $valid, $propagate) >>

The same; with C<$propagate> also the marks that rest on the one taken away.
Returns a message.

=item C<< $data->getValidationLevel() >>

A number kept for the validator, 0 at first.

=item C<< $data->setValidationLevel($value) >>

Sets it. Returns a message.

=back

=head2 The current path

=over

=item C<< $data->getCurrentPath() >>

The path to which others are relative, C</> at first.

=item C<< $data->pushPath($path) >>

Makes the path of a node the current one, until C<popPath>. Returns a message.

=item C<< $data->popPath() >>

Goes back to the path before. Returns a message.

=item C<< $data->changePath($path) >>

Replaces the current path. Returns a message.

=item C<< VEL::Parser::Lite::cleanPath($path) >>

The normal form of a path: no stray blanks, no doubled slashes. A function.

=back

=head2 Handlers

A handler that dies stops the operation that called it, which then dies with the
same error; what has been changed until then stays changed. C<last> and C<next>
do not lead out of a handler. A handler may use the database, also to change it;
changes of changes end at a depth of 200 with C<Handlers call each other without
end>.

=over

=item C<< $data->addChangeHandler($rsub) >>

Has the code called at every change, after those added before, with the path, a
code (0: a value, 1: an object created, 2: an object deleted), the new value and
the old value, C<undef> where there is none. Only for an object that owns its
database. Returns nothing.

=item C<< $data->clearChangeHandlers() >>

Takes all of them away. Returns nothing.

=item C<< $data->registerActionHandler($handler) >>

Has the code called for lines that begin with C<< > >>, with the first word and
the rest of the line (the empty text where there is none). It must give exactly one
value, else the operation dies with C<Missing return value from call_sv on action
handler> or C<Too many return values from call_sv on action handler>; the value
itself does not matter. Replaces the handler before. Returns a message.

=item C<< $data->invokeAction($action, $args) >>

Calls the action handler with the word and the elements of the array; C<undef>
counts as one empty text. Returns a message.

=back

=cut
