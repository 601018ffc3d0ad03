<?xml version="1.0"?>
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">
<xsl:variable name="sum" select="$left + $right"/>
<xsl:variable name="left" select="1"/>
</xsl:stylesheet>
